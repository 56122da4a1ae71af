// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Terminal/ZPKTerminalFrontEnd.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <limits>
#include <string>

#include "Tests/UserInterface/FrontEndContract.h"

namespace zpk_test {

/// A pipe whose writing end stands for an output that is no terminal.
class Pipe {
public:
    Pipe() {
        EXPECT_EQ(pipe(m_ends), 0);
        fcntl(m_ends[1], F_SETPIPE_SZ, 1 << 20);
    }
    ~Pipe() {
        closeWriter();
        close(m_ends[0]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return m_ends[0]; }
    int writer() const { return m_ends[1]; }

    void closeWriter() {
        if (m_ends[1] >= 0) {
            close(m_ends[1]);
        }
        m_ends[1] = -1;
    }

    std::string drained() {
        closeWriter();
        std::string text;
        char block[4096];
        for (ssize_t count; (count = read(m_ends[0], block, sizeof(block))) > 0;) {
            text.append(block, static_cast<std::size_t>(count));
        }
        return text;
    }

private:
    int m_ends[2] = {-1, -1};
};

/// A terminal of our own: what is typed goes in at one end, what is printed comes out there.
class PseudoTerminal {
public:
    explicit PseudoTerminal(unsigned short columns = 80) {
        const winsize size{24, columns, 0, 0};
        EXPECT_EQ(openpty(&m_person, &m_program, nullptr, nullptr, &size), 0);
        // What a test types ahead would otherwise come back anywhere between the program's words.
        termios settings{};
        EXPECT_EQ(tcgetattr(m_program, &settings), 0);
        settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        EXPECT_EQ(tcsetattr(m_program, TCSANOW, &settings), 0);
        fcntl(m_person, F_SETFL, O_NONBLOCK);
    }
    ~PseudoTerminal() {
        hangUp();
        close(m_program);
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    int program() const { return m_program; }

    void type(const std::string& text) {
        EXPECT_EQ(write(m_person, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    void hangUp() {
        if (m_person >= 0) {
            close(m_person);
        }
        m_person = -1;
    }

    /// What was printed, the echo of what was typed with it. The host passes it on a little later, so
    /// it has come to its end when there was silence for a while.
    std::string screen() {
        std::string text;
        char block[4096];
        pollfd waited{m_person, POLLIN, 0};
        while (poll(&waited, 1, 200) == 1) {
            const ssize_t count = read(m_person, block, sizeof(block));
            if (count <= 0) {
                break;
            }
            text.append(block, static_cast<std::size_t>(count));
        }
        return text;
    }

    /// Reads until `text` was printed; fails the test when it does not come.
    void waitFor(const std::string& text) {
        constexpr int kLongestMilliseconds = 20'000;
        std::string printed;
        pollfd waited{m_person, POLLIN, 0};
        while (printed.find(text) == std::string::npos) {
            char block[4096];
            const bool isThere = poll(&waited, 1, kLongestMilliseconds) == 1;
            const ssize_t count = isThere ? read(m_person, block, sizeof(block)) : 0;
            if (count <= 0) {
                ADD_FAILURE() << "only this was printed: " << printed;
                return;
            }
            printed.append(block, static_cast<std::size_t>(count));
        }
    }

private:
    int m_person = -1;
    int m_program = -1;
};

std::unique_ptr<ZPKFrontEnd> makeTerminalFrontEnd() {
    return std::make_unique<ZPKTerminalFrontEnd>();
}

INSTANTIATE_TEST_SUITE_P(Each, FrontEndContract,
                         ::testing::Values(FrontEndKind{"Terminal", &makeTerminalFrontEnd}));

/// What the disc search window's owner would do.
struct Asked {
    int searches = 0;
    int cancels = 0;
    int code = 0;
};

Asked ask(ZPKTerminalFrontEnd& frontEnd, bool cancelStops = true) {
    Asked asked;
    runWith(frontEnd, [&] {
        auto window = frontEnd.createCDSearchWindow();
        window->center();
        window->setFontName(ZPKCDSearchControl::TextField, "DejaVu Sans");
        window->setTitle("Disc");
        window->setMessage("Insert the disc.");
        window->setProductList("Suite\nTools");
        window->setSearchButtonTitle("Look");
        window->setCancelButtonTitle("Leave");
        window->setActions({[&] {
                                if (++asked.searches == 3) {
                                    frontEnd.stopModal(ZPKModalResponseStop);
                                }
                            },
                            [&] {
                                ++asked.cancels;
                                if (cancelStops) {
                                    frontEnd.stopModal(ZPKModalResponseAbort);
                                    window->close();
                                }
                            },
                            [] { return true; }});
        asked.code = frontEnd.runModalForWindow(*window);
    });
    return asked;
}

class TerminalOnPipes : public ::testing::Test {
protected:
    Pipe in;
    Pipe out;
    Pipe error;
    ZPKTerminalFrontEnd frontEnd{in.reader(), out.writer(), error.writer()};

    std::unique_ptr<ZPKProgressWindow> shownProgress(const std::string& title) {
        auto window = frontEnd.createProgressWindow();
        window->setTitle(title);
        window->makeKeyAndOrderFront();
        return window;
    }
};

TEST_F(TerminalOnPipes, ProgressIsALineAValue) {
    auto window = shownProgress("Unpacking");
    for (const double value : {10.0, 40.0, 40.0, 100.0}) {
        window->progressIndicator().setDoubleValue(value);
        window->progressIndicator().setNeedsDisplay();
    }
    window->close();
    EXPECT_EQ(out.drained(), "Unpacking: 10%\nUnpacking: 40%\nUnpacking: 100%\n");
}

TEST_F(TerminalOnPipes, ProgressThatIsNotShownPrintsNothing) {
    auto window = frontEnd.createProgressWindow();
    window->setTitle("Unpacking");
    window->progressIndicator().setDoubleValue(10);
    EXPECT_EQ(out.drained(), "");
}

TEST_F(TerminalOnPipes, ProgressCountsFromMinimumToMaximum) {
    auto window = shownProgress("T");
    ZPKProgressIndicator& bar = window->progressIndicator();
    bar.setMinValue(50);
    bar.setMaxValue(150);
    bar.setDoubleValue(75);
    bar.setDoubleValue(1000);
    bar.setDoubleValue(-1000);
    EXPECT_EQ(out.drained(), "T: 25%\nT: 100%\nT: 0%\n");
}

TEST_F(TerminalOnPipes, ProgressWithoutARangeOrANumberPrintsNothing) {
    auto window = shownProgress("T");
    ZPKProgressIndicator& bar = window->progressIndicator();
    bar.setMaxValue(0);
    bar.setDoubleValue(0);
    bar.setMaxValue(100);
    bar.setDoubleValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(out.drained(), "");
}

TEST_F(TerminalOnPipes, IndeterminateProgressPrintsItsTitleOnce) {
    auto window = frontEnd.createProgressWindow();
    window->progressIndicator().setIndeterminate(true);
    window->progressIndicator().startAnimation();
    window->makeKeyAndOrderFront();
    window->setTitle("Searching");
    window->progressIndicator().setNeedsDisplay();
    auto session = frontEnd.beginModalSessionForWindow(*window);
    session->run();
    session.reset();
    window->progressIndicator().stopAnimation();
    window->close();
    EXPECT_EQ(out.drained(), "Searching\n");
}

TEST_F(TerminalOnPipes, AlertIsTextOnStandardError) {
    frontEnd.runAlert({"Applies to:\nSuite", "", "OK"});
    frontEnd.runAlert({"Message", "More", "OK"});
    EXPECT_EQ(error.drained(), "Applies to:\nSuite\nMessage\nMore\n");
    EXPECT_EQ(out.drained(), "");
}

TEST_F(TerminalOnPipes, TextCannotCommandTheTerminalNorTurnItselfAround) {
    const std::string hostile =
        "a\x1b[2J\rb\x07\xc2\x9b"
        "31mc\x7f\xff\xe3\x81 exe.\u202Efdp\u2066\u200F\tz";
    const std::string drawn = "a[2Jb31mc exe.fdp z";
    frontEnd.runAlert({hostile + "\nmore", hostile, ""});
    EXPECT_EQ(error.drained(), drawn + "\nmore\n" + drawn + "\n");
    shownProgress("one\ntwo" + hostile)->progressIndicator().setDoubleValue(1);
    auto window = frontEnd.createCDSearchWindow();
    window->setTitle("1\n" + hostile);
    window->setMessage("2\n" + hostile);
    window->setProductList(hostile + "\n" + hostile);
    window->makeKeyAndOrderFront();
    EXPECT_EQ(out.drained(), "one two" + drawn + ": 1%\n1 " + drawn + "\n\n2\n" + drawn + "\n  " + drawn +
                                 "\n  " + drawn + "\n");
}

TEST_F(TerminalOnPipes, ProgressIsWrittenAsTheLanguageDoes) {
    frontEnd.setInterfaceLanguage("tr");
    shownProgress("T")->progressIndicator().setDoubleValue(40);
    EXPECT_EQ(out.drained(), "T: %40\n");
}

TEST_F(TerminalOnPipes, QuestionWithoutATerminalCountsAsCancel) {
    ASSERT_EQ(write(in.writer(), "1\n", 2), 2);
    const Asked asked = ask(frontEnd);
    EXPECT_EQ(asked.searches, 0);
    EXPECT_EQ(asked.cancels, 1);
    EXPECT_EQ(asked.code, ZPKModalResponseAbort);
    EXPECT_EQ(out.drained(), "Disc\n\nInsert the disc.\n  Suite\n  Tools\n");
}

TEST_F(TerminalOnPipes, CancelThatStopsNothingStillEndsTheLoop) {
    EXPECT_EQ(ask(frontEnd, false).code, ZPKModalResponseAbort);
}

TEST_F(TerminalOnPipes, OutputThatIsClosedIsIgnored) {
    signal(SIGPIPE, SIG_IGN);
    close(out.reader());
    shownProgress("T")->progressIndicator().setDoubleValue(1);
}

TEST(TerminalLine, KeepsUtf8AndLeavesOutWhatIsNone) {
    const std::string fine = "z\xc3\xa9 \xe6\x97\xa5 \xf0\x9f\x92\xbf \xd7\xa9";
    EXPECT_EQ(ZPKTerminal::line(fine), fine);
    const struct {
        const char* input;
        const char* output;
    } rows[] = {
        {"\xc0\x80", ""},
        {"\xed\xa0\x80", ""},
        {"\x80", ""},
        {"\xc3(", "("},
        {"\xf0\x9f\x92z", "z"},
        {"\xc2\x85", ""},
        {"\xc2\xa0", "\xc2\xa0"},
        {"a\tb", "a b"},
        {"a\r\nb", "a b"},
        {"a\u2028b", "ab"},
        {"", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ZPKTerminal::line(row.input), row.output);
    }
    EXPECT_EQ(ZPKTerminal::line(std::string("a\0b", 3)), "ab");
}

TEST(TerminalOnATerminal, ProgressRewritesItsLine) {
    PseudoTerminal terminal;
    ZPKTerminalFrontEnd frontEnd(terminal.program(), terminal.program(), terminal.program());
    auto window = frontEnd.createProgressWindow();
    window->setTitle("T");
    window->makeKeyAndOrderFront();
    window->progressIndicator().setDoubleValue(100);
    window->progressIndicator().setDoubleValue(40);
    frontEnd.runAlert({"Alert", "", "OK"});
    window->progressIndicator().setDoubleValue(50);
    window->close();
    EXPECT_EQ(terminal.screen(), "\rT: 100%\rT: 40% \b\r\nAlert\r\n\rT: 50%\r\n");
}

TEST(TerminalOnATerminal, ProgressThatIsTooWideIsALineAValue) {
    PseudoTerminal terminal(10);
    ZPKTerminalFrontEnd frontEnd(terminal.program(), terminal.program(), terminal.program());
    auto window = frontEnd.createProgressWindow();
    window->setTitle("Unpacking");
    window->makeKeyAndOrderFront();
    window->progressIndicator().setDoubleValue(10);
    window->progressIndicator().setDoubleValue(40);
    EXPECT_EQ(terminal.screen(), "Unpacking: 10%\r\nUnpacking: 40%\r\n");
}

TEST(TerminalOnATerminal, HostileTitleCannotMoveTheCursor) {
    PseudoTerminal terminal;
    ZPKTerminalFrontEnd frontEnd(terminal.program(), terminal.program(), terminal.program());
    auto window = frontEnd.createProgressWindow();
    window->setTitle("T\x1b[A\b\n\u202E");
    window->makeKeyAndOrderFront();
    window->progressIndicator().setDoubleValue(40);
    EXPECT_EQ(terminal.screen(), "\rT[A : 40%");
}

class TerminalQuestion : public ::testing::Test {
protected:
    PseudoTerminal terminal;
    ZPKTerminalFrontEnd frontEnd{terminal.program(), terminal.program(), terminal.program()};
};

TEST_F(TerminalQuestion, OneAndReturnSearchAndTwoCancels) {
    terminal.type("1\n\n 2 \n");
    const Asked asked = ask(frontEnd);
    EXPECT_EQ(asked.searches, 2);
    EXPECT_EQ(asked.cancels, 1);
    EXPECT_EQ(asked.code, ZPKModalResponseAbort);
}

TEST_F(TerminalQuestion, AsksWithTheButtonsTitlesAndAgainAfterEachSearch) {
    terminal.type("1\n1\n1\n");
    EXPECT_EQ(ask(frontEnd).code, ZPKModalResponseStop);
    const std::string screen = terminal.screen();
    const std::string question = "[1] Look  [2] Leave: ";
    EXPECT_NE(screen.find("Disc\r\n\r\nInsert the disc.\r\n  Suite\r\n  Tools\r\n" + question),
              std::string::npos)
        << screen;
    std::size_t count = 0;
    for (std::size_t at = 0; (at = screen.find(question, at)) != std::string::npos; ++at) {
        ++count;
    }
    EXPECT_EQ(count, 3U);
}

TEST_F(TerminalQuestion, OtherAnswersAreAskedAgain) {
    terminal.type("3\nyes\n-1\n" + std::string(3000, 'x') + "\n2\n");
    const Asked asked = ask(frontEnd);
    EXPECT_EQ(asked.searches, 0);
    EXPECT_EQ(asked.cancels, 1);
}

TEST_F(TerminalQuestion, EndOfInputCancels) {
    terminal.type("\x04");
    EXPECT_EQ(ask(frontEnd).cancels, 1);
}

TEST_F(TerminalQuestion, TerminalThatHangsUpCancels) {
    terminal.hangUp();
    EXPECT_EQ(ask(frontEnd).cancels, 1);
}

TEST_F(TerminalQuestion, AbortEndsTheQuestion) {
    std::thread worker([&] {
        terminal.waitFor("[2] Leave: ");
        frontEnd.abortModal();
    });
    const Asked asked = ask(frontEnd);
    worker.join();
    EXPECT_EQ(asked.cancels, 0);
    EXPECT_EQ(asked.code, ZPKModalResponseAbort);
}

TEST_F(TerminalQuestion, WindowWithoutActionsEndsAtTheEndOfInput) {
    terminal.type("1\n2\n\x04");
    runWith(frontEnd, [&] {
        auto window = frontEnd.createCDSearchWindow();
        EXPECT_EQ(frontEnd.runModalForWindow(*window), ZPKModalResponseAbort);
    });
}

}  // namespace zpk_test
