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

#include <chrono>
#include <csignal>
#include <limits>
#include <string>

#include "Tests/Platform/ScopedEnvironment.h"
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

    void resize(unsigned short columns) {
        const winsize size{24, columns, 0, 0};
        EXPECT_EQ(ioctl(m_program, TIOCSWINSZ, &size), 0);
    }

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

    /// Reads until `text` was printed, and gives what was read; fails the test when it does not come.
    std::string waitFor(const std::string& text) {
        constexpr int kLongestMilliseconds = 60'000;
        std::string printed;
        pollfd waited{m_person, POLLIN, 0};
        while (printed.find(text) == std::string::npos) {
            char block[4096];
            const bool isThere = poll(&waited, 1, kLongestMilliseconds) == 1;
            const ssize_t count = isThere ? read(m_person, block, sizeof(block)) : 0;
            if (count <= 0) {
                ADD_FAILURE() << "only this was printed: " << printed;
                return printed;
            }
            printed.append(block, static_cast<std::size_t>(count));
        }
        return printed;
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
    EXPECT_EQ(out.drained(), "10%  Unpacking\n40%  Unpacking\n100%  Unpacking\n");
}

TEST_F(TerminalOnPipes, ProgressThatIsNotShownPrintsNothing) {
    auto window = frontEnd.createProgressWindow();
    window->setTitle("Unpacking");
    window->progressIndicator().setDoubleValue(10);
    EXPECT_EQ(out.drained(), "");
}

TEST_F(TerminalOnPipes, ProgressThatIsShownAgainIsPrintedAgain) {
    auto window = shownProgress("T");
    window->progressIndicator().setDoubleValue(10);
    window->close();
    window->makeKeyAndOrderFront();
    EXPECT_EQ(out.drained(), "10%  T\n10%  T\n");
}

TEST_F(TerminalOnPipes, ProgressCountsFromMinimumToMaximum) {
    auto window = shownProgress("T");
    ZPKProgressIndicator& bar = window->progressIndicator();
    bar.setMinValue(50);
    bar.setMaxValue(150);
    bar.setDoubleValue(75);
    bar.setDoubleValue(1000);
    bar.setDoubleValue(-1000);
    EXPECT_EQ(out.drained(), "25%  T\n100%  T\n0%  T\n");
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
    shownProgress("one\ntwo" + hostile)->progressIndicator().setDoubleValue(1);
    auto window = frontEnd.createCDSearchWindow();
    window->setTitle("1\n" + hostile);
    window->setMessage("2\n" + hostile);
    window->setProductList(hostile + "\n" + hostile);
    window->makeKeyAndOrderFront();
    EXPECT_EQ(error.drained(), drawn + "\nmore\n" + drawn + "\n1 " + drawn + "\n\n2\n" + drawn + "\n  " +
                                   drawn + "\n  " + drawn + "\n");
    EXPECT_EQ(out.drained(), "1%  one two" + drawn + "\n");
}

TEST_F(TerminalOnPipes, ProgressIsWrittenAsTheLanguageDoes) {
    frontEnd.setInterfaceLanguage("tr");
    shownProgress("T")->progressIndicator().setDoubleValue(40);
    EXPECT_EQ(out.drained(), "%40  T\n");
}

TEST_F(TerminalOnPipes, QuestionWithoutATerminalCountsAsCancel) {
    ASSERT_EQ(write(in.writer(), "1\n", 2), 2);
    const Asked asked = ask(frontEnd);
    EXPECT_EQ(asked.searches, 0);
    EXPECT_EQ(asked.cancels, 1);
    EXPECT_EQ(asked.code, ZPKModalResponseAbort);
    EXPECT_EQ(error.drained(), "Disc\n\nInsert the disc.\n  Suite\n  Tools\n");
    EXPECT_EQ(out.drained(), "");
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

/// The time of the front ends below, which passes when a test says so.
std::chrono::steady_clock::time_point g_now;

/// A terminal that obeys, and a front end on it.
class TerminalOnATerminal : public ::testing::Test {
protected:
    const ScopedEnvironment kind{"TERM", "xterm-256color"};
    const ScopedEnvironment colours{"NO_COLOR", std::nullopt};
    PseudoTerminal terminal;

    ZPKTerminalFrontEnd frontEndOn(int input, int output, int error) {
        return {input, output, error, [] { return g_now; }};
    }

    void turn(ZPKTerminalFrontEnd& frontEnd, ZPKWindow& window) {
        frontEnd.beginModalSessionForWindow(window)->run();
    }
};

class TerminalProgress : public TerminalOnATerminal {
protected:
    ZPKTerminalFrontEnd frontEnd = frontEndOn(terminal.program(), terminal.program(), terminal.program());
    std::unique_ptr<ZPKProgressWindow> window = frontEnd.createProgressWindow();

    void show(const std::string& title, double value) {
        window->setTitle(title);
        window->makeKeyAndOrderFront();
        window->progressIndicator().setDoubleValue(value);
    }

    /// Without what takes away the rest of each line.
    std::string lines() {
        std::string shown = terminal.screen();
        for (std::size_t place = 0; (place = shown.find(kErase)) != std::string::npos;) {
            shown.erase(place, kErase.size());
        }
        return shown;
    }

    static constexpr std::string_view kErase = "\x1b[K";
};

TEST_F(TerminalProgress, RewritesItsLine) {
    show("T", 100);
    window->progressIndicator().setDoubleValue(40);
    frontEnd.runAlert({"Alert", "", "OK"});
    window->progressIndicator().setDoubleValue(50);
    window->close();
    EXPECT_EQ(lines(),
              "\r[###################]  100%  0:00  T\r[#######............]   40%  0:00  T\r\n\r\nAlert\r\n"
              "\r[#########..........]   50%  0:00  T\r\n");
}

TEST_F(TerminalProgress, ShowsEachSecondOnce) {
    show("T", 40);
    for (const int milliseconds : {0, 999, 1, 500, 1000}) {
        g_now += std::chrono::milliseconds(milliseconds);
        turn(frontEnd, *window);
    }
    EXPECT_EQ(lines(),
              "\r[#######............]   40%  0:00  T\r[#######............]   40%  0:01  T"
              "\r[#######............]   40%  0:02  T");
}

TEST_F(TerminalProgress, TimePassesInALoopThatNothingWakes) {
    std::thread worker([&] {
        terminal.waitFor("0:00");
        frontEnd.performOnMainThreadAndWait([] { g_now += std::chrono::seconds(1); });
        terminal.waitFor("0:01");
        frontEnd.performOnMainThreadAndWait([&] { terminal.resize(20); });
        terminal.waitFor("\r[##...]   40%  0:01");
        frontEnd.abortModal();
    });
    runWith(frontEnd, [&] {
        window->setTitle("Unpacking");
        window->progressIndicator().setDoubleValue(40);
        frontEnd.runModalForWindow(*window);
    });
    worker.join();
}

TEST_F(TerminalProgress, WithoutAnEndMovesAndCountsTheTime) {
    window->progressIndicator().setIndeterminate(true);
    window->progressIndicator().startAnimation();
    window->makeKeyAndOrderFront();
    window->setTitle("Searching");
    g_now += std::chrono::seconds(2);
    turn(frontEnd, *window);
    window->close();
    EXPECT_EQ(lines(),
              "\r[###................]  0:00  Searching\r[..###..............]  0:02  Searching\r\n");
}

TEST_F(TerminalProgress, TitleThatHasNoRoomStandsAboveOnce) {
    terminal.resize(24);
    show("Unpacking it all", 10);
    window->progressIndicator().setDoubleValue(40);
    EXPECT_EQ(lines(), "Unpacking it all\r\n\r[.....]   10%  0:00\r[##...]   40%  0:00");
}

TEST_F(TerminalProgress, LineThatBecomesShorterLeavesNothing) {
    show("T", 40);
    terminal.resize(20);
    turn(frontEnd, *window);
    const std::string screen = lines();
    const std::string last = "\r\nT\r\n\r[##...]   40%  0:00";
    EXPECT_TRUE(screen.ends_with(last)) << screen;
}

/// What a terminal has joined to the line when it became wider, too, whatever its length.
TEST_F(TerminalProgress, NothingStaysBehindALine) {
    show("Longer", 40);
    window->setTitle("L");
    EXPECT_TRUE(terminal.screen().ends_with("Longer\x1b[K\r[#######............]   40%  0:00  L\x1b[K"));
}

TEST_F(TerminalOnATerminal, NothingStaysBehindALineWithoutEscapeSequences) {
    const ScopedEnvironment noColours("NO_COLOR", "1");
    ZPKTerminalFrontEnd frontEnd = frontEndOn(terminal.program(), terminal.program(), terminal.program());
    auto window = frontEnd.createProgressWindow();
    terminal.resize(42);
    window->setTitle("T");
    window->makeKeyAndOrderFront();
    window->progressIndicator().setDoubleValue(40);
    EXPECT_EQ(terminal.screen(),
              "\r[####......]   40%  0:00  T" + std::string(14, ' ') + std::string(14, '\b'));
}

TEST_F(TerminalProgress, HostileTitleCannotMoveTheCursor) {
    show("T\x1b[A\b\n\u202E", 40);
    EXPECT_EQ(lines(), "\r[#######............]   40%  0:00  T[A ");
}

TEST_F(TerminalProgress, WideTitleIsCountedInColumns) {
    terminal.resize(33);
    show("日本語", 40);
    window->setTitle("日本語abc");
    EXPECT_EQ(lines(), "\r[###.....]   40%  0:00  日本語\r\n日本語abc\r\n\r[###.....]   40%  0:00");
}

/// They would stand at the other end of the line.
TEST_F(TerminalProgress, SignsOfARightToLeftTitleAreMarked) {
    show("שלום…", 40);
    EXPECT_EQ(lines(), "\r[#######............]   40%  0:00  שלום…\u200F");
    terminal.resize(30);
    window->setTitle("שלום שלום…");
    EXPECT_EQ(lines(), "\r\nשלום שלום…\u200F\r\n\r[##.....]   40%  0:00");
}

TEST_F(TerminalOnATerminal, OneThatCannotRewriteGetsLines) {
    const ScopedEnvironment dumb("TERM", "dumb");
    ZPKTerminalFrontEnd frontEnd = frontEndOn(terminal.program(), terminal.program(), terminal.program());
    auto window = frontEnd.createProgressWindow();
    window->setTitle("T");
    window->makeKeyAndOrderFront();
    window->progressIndicator().setDoubleValue(10);
    g_now += std::chrono::seconds(5);
    turn(frontEnd, *window);
    window->progressIndicator().setDoubleValue(40);
    EXPECT_EQ(terminal.screen(), "10%  T\r\n40%  T\r\n");
}

TEST_F(TerminalOnATerminal, AlertGoesWhereThePersonReads) {
    PseudoTerminal other;
    Pipe pipe;
    const struct {
        int output;
        int error;
        PseudoTerminal& reader;
    } rows[] = {
        {terminal.program(), other.program(), terminal},
        {terminal.program(), pipe.writer(), terminal},
        {pipe.writer(), terminal.program(), terminal},
        {terminal.program(), terminal.program(), terminal},
    };
    for (const auto& row : rows) {
        ZPKTerminalFrontEnd frontEnd = frontEndOn(terminal.program(), row.output, row.error);
        frontEnd.runAlert({"Alert", "", "OK"});
        EXPECT_EQ(row.reader.screen(), "\r\nAlert\r\n");
    }
    EXPECT_EQ(other.screen(), "");
    EXPECT_EQ(pipe.drained(), "");
}

TEST_F(TerminalOnATerminal, QuestionGoesWhereThePersonReads) {
    Pipe pipe;
    terminal.type("2\n");
    ZPKTerminalFrontEnd frontEnd = frontEndOn(terminal.program(), pipe.writer(), terminal.program());
    EXPECT_EQ(ask(frontEnd).cancels, 1);
    EXPECT_TRUE(terminal.screen().ends_with("\r\n> [1] Look\r\n  [2] Leave\r\n[1]: "));
    EXPECT_EQ(pipe.drained(), "");
}

TEST_F(TerminalOnATerminal, AlertIsFoldedAtWords) {
    terminal.resize(21);
    ZPKTerminalFrontEnd frontEnd = frontEndOn(terminal.program(), terminal.program(), terminal.program());
    frontEnd.runAlert({"It applies to one of:\n\n  Suite for many people", "", "OK"});
    EXPECT_EQ(terminal.screen(), "\r\nIt applies to one\r\nof:\r\n\r\n  Suite for many\r\n    people\r\n");
}

TEST_F(TerminalOnATerminal, SignsOfRightToLeftLinesAreMarkedWhereAPersonReads) {
    Pipe pipe;
    terminal.resize(8);
    const ZPKAlert alert{"שלום, שלום.", "", "OK"};
    frontEndOn(terminal.program(), terminal.program(), terminal.program()).runAlert(alert);
    EXPECT_EQ(terminal.screen(), "\r\nשלום,\u200F\r\nשלום.\u200F\r\n");
    frontEndOn(terminal.program(), pipe.writer(), pipe.writer()).runAlert(alert);
    EXPECT_EQ(pipe.drained(), "שלום, שלום.\n");
}

class TerminalQuestion : public TerminalOnATerminal {
protected:
    ZPKTerminalFrontEnd frontEnd = frontEndOn(terminal.program(), terminal.program(), terminal.program());
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
    const std::string question = "\r\n> [1] Look\r\n  [2] Leave\r\n[1]: ";
    EXPECT_NE(screen.find("\r\nDisc\r\n\r\nInsert the disc.\r\n  Suite\r\n  Tools\r\n" + question),
              std::string::npos)
        << screen;
    std::size_t count = 0;
    for (std::size_t at = 0; (at = screen.find(question, at)) != std::string::npos; ++at) {
        ++count;
    }
    EXPECT_EQ(count, 3U);
}

TEST_F(TerminalQuestion, DigitsOfOtherKeyboardsAreAnswers) {
    terminal.type("\u0661\n\uFF11\n\u06F2\n");
    const Asked asked = ask(frontEnd);
    EXPECT_EQ(asked.searches, 2);
    EXPECT_EQ(asked.cancels, 1);
}

TEST_F(TerminalQuestion, WrongAnswerIsShownAndCannotCommandTheTerminal) {
    terminal.type("3\ny\u202E\x1b[J" + std::string(100, 'x') + "\n2\n");
    EXPECT_EQ(ask(frontEnd).cancels, 1);
    const std::string screen = terminal.screen();
    const std::string question = "\r\n> [1] Look\r\n  [2] Leave\r\n[1]: ";
    EXPECT_NE(screen.find(question + "\"3\" ? [1] [2]\r\n" + question), std::string::npos) << screen;
    EXPECT_NE(
        screen.find("\"y\\xe2\\x80\\xae\\x1b[J" + std::string(21, 'x') + "...\" ? [1] [2]\r\n" + question),
        std::string::npos)
        << screen;
}

TEST_F(TerminalQuestion, IsFoldedAnewWhenTheWidthChanges) {
    terminal.resize(15);
    std::thread worker([&] {
        terminal.waitFor(
            "Insert the\r\ndisc.\r\n  Suite\r\n  Tools\r\n\r\n> [1] Look\r\n  [2] Leave\r\n[1]: ");
        terminal.resize(60);
        // Up the lines that stand there, and all of it again.
        terminal.waitFor(
            "\r\x1b[10A\x1b[J\r\nDisc\r\n\r\nInsert the disc.\r\n  Suite\r\n  Tools\r\n\r\n> [1] ");
        terminal.type("3\n");
        terminal.waitFor("\"3\" ? [1] [2]\r\n\r\n> [1] Look\r\n  [2] Leave\r\n[1]: ");
        terminal.resize(15);
        terminal.waitFor("\x1b[14A\x1b[J\r\nDisc\r\n\r\nInsert the\r\ndisc.");
        terminal.type("2\n");
    });
    EXPECT_EQ(ask(frontEnd).cancels, 1);
    worker.join();
}

TEST_F(TerminalOnATerminal, WithoutEscapesTheQuestionIsFoldedAnewBelow) {
    const ScopedEnvironment noColours("NO_COLOR", "1");
    terminal.resize(15);
    ZPKTerminalFrontEnd frontEnd = frontEndOn(terminal.program(), terminal.program(), terminal.program());
    std::string screen;
    std::thread worker([&] {
        terminal.waitFor("[1]: ");
        terminal.resize(60);
        screen = terminal.waitFor("[1]: ");
        terminal.type("2\n");
    });
    EXPECT_EQ(ask(frontEnd).cancels, 1);
    worker.join();
    EXPECT_EQ(screen,
              "\r\n\r\nDisc\r\n\r\nInsert the disc.\r\n  Suite\r\n  Tools\r\n\r\n> [1] Look\r\n  [2] "
              "Leave\r\n[1]: ");
}

TEST_F(TerminalQuestion, CanBeCancelledFromAnyThreadWhileItIsAsked) {
    EXPECT_FALSE(frontEnd.cancelQuestion());
    bool isTaken = false;
    std::thread worker([&] {
        terminal.waitFor("[1]: ");
        isTaken = frontEnd.cancelQuestion();
    });
    const Asked asked = ask(frontEnd);
    worker.join();
    EXPECT_TRUE(isTaken);
    EXPECT_EQ(asked.cancels, 1);
    EXPECT_EQ(asked.code, ZPKModalResponseAbort);
    EXPECT_FALSE(frontEnd.cancelQuestion());
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
        terminal.waitFor("[1]: ");
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
