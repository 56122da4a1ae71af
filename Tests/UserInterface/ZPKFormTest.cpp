// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "Tests/Support/CapturedStreams.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/UserInterface/DesktopFixture.h"

namespace zpk_test {

/// A copy of the delivered forms with one of them damaged.
class DesktopForms : public ::testing::Test {
protected:
    TemporaryFolder folder;
    std::string forms = folder.path();

    struct Outcome {
        int status = 0;
        std::string errors;
        std::size_t messages = 0;
    };

    Outcome runWith(const std::string& form, const std::function<void(const std::string& path)>& damage,
                    const std::function<void(ZPKFrontEnd&)>& use) {
        for (const char* name : {"MainMenu.ui", "ProgressWindow.ui", "CDSearchWindow.ui"}) {
            std::filesystem::remove_all(forms + "/" + name);
            writeFile(forms + "/" + name, readFile(deliveredForms() + "/" + name));
        }
        damage(forms + "/" + form);
        ZPKDesktopParameters parameters = desktopParameters();
        parameters.resourceFolder = forms;
        Outcome outcome;
        ScriptedDelegate delegate;
        outcome.errors = captureStreams([&] {
                             const std::unique_ptr<ZPKFrontEnd> frontEnd = openDesktop(parameters);
                             delegate.onDidFinish = [&] {
                                 use(*frontEnd);
                                 frontEnd->terminate();
                             };
                             outcome.status = frontEnd->run(delegate);
                         }).standardError;
        outcome.messages = delegate.messages.size();
        return outcome;
    }

    /// One line that begins with the path.
    void expectOneLine(const std::string& errors, const std::string& form) {
        EXPECT_EQ(errors.find("Cannot load the form " + folder / form + ": "), 0U) << errors;
        EXPECT_EQ(errors.find('\n'), errors.size() - 1) << errors;
    }

    static std::vector<std::pair<const char*, std::function<void(const std::string&)>>> damages() {
        const auto replaced = [](const std::string& path, const std::string& contents) {
            writeFile(path, contents);
        };
        return {
            {"missing", [](const std::string& path) { std::filesystem::remove(path); }},
            {"folder",
             [](const std::string& path) {
                 std::filesystem::remove(path);
                 std::filesystem::create_directory(path);
             }},
            {"FIFO",
             [](const std::string& path) {
                 std::filesystem::remove(path);
                 ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
             }},
            {"empty", [=](const std::string& path) { replaced(path, ""); }},
            {"no XML", [=](const std::string& path) { replaced(path, std::string(1000, '\xff')); }},
            {"no form", [=](const std::string& path) { replaced(path, "<a><b/></a>"); }},
            {"no window", [=](const std::string& path) { replaced(path, "<ui version=\"4.0\"></ui>"); }},
            {"cut",
             [=](const std::string& path) {
                 const std::string whole = readFile(path);
                 replaced(path, whole.substr(0, whole.size() / 2));
             }},
            {"another window",
             [=](const std::string& path) {
                 replaced(path,
                          "<ui version=\"4.0\"><widget class=\"QLabel\" name=\"x\">"
                          "<property name=\"nonsense\"><number>1</number></property></widget></ui>");
             }},
            {"unknown class",
             [=](const std::string& path) {
                 replaced(path, "<ui version=\"4.0\"><widget class=\"QNonsense\" name=\"x\"/></ui>");
             }},
        };
    }
};

TEST_F(DesktopForms, MainMenuThatCannotBeLoadedEndsTheRunBeforeItBegins) {
    for (const auto& [name, damage] : damages()) {
        SCOPED_TRACE(name);
        const Outcome outcome = runWith("MainMenu.ui", damage, [](ZPKFrontEnd&) { FAIL(); });
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.messages, 0U);
        expectOneLine(outcome.errors, "MainMenu.ui");
    }
}

TEST_F(DesktopForms, ProgressWindowThatCannotBeLoadedGivesNothingAndStatusOne) {
    for (const auto& [name, damage] : damages()) {
        SCOPED_TRACE(name);
        const Outcome outcome = runWith("ProgressWindow.ui", damage, [](ZPKFrontEnd& frontEnd) {
            EXPECT_EQ(frontEnd.createProgressWindow(), nullptr);
        });
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.messages, 3U);
        expectOneLine(outcome.errors, "ProgressWindow.ui");
    }
}

TEST_F(DesktopForms, DiscWindowThatCannotBeLoadedGivesNothingAndStatusOne) {
    for (const auto& [name, damage] : damages()) {
        SCOPED_TRACE(name);
        const Outcome outcome = runWith("CDSearchWindow.ui", damage, [](ZPKFrontEnd& frontEnd) {
            EXPECT_EQ(frontEnd.createCDSearchWindow(), nullptr);
        });
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.messages, 3U);
        expectOneLine(outcome.errors, "CDSearchWindow.ui");
    }
}

TEST_F(DesktopForms, EveryCutOfAFormIsSurvived) {
    const std::string whole = readFile(deliveredForms() + "/CDSearchWindow.ui");
    for (std::size_t length = 0; length < whole.size(); length += 97) {
        const Outcome outcome = runWith(
            "CDSearchWindow.ui", [&](const std::string& path) { writeFile(path, whole.substr(0, length)); },
            [](ZPKFrontEnd& frontEnd) { EXPECT_EQ(frontEnd.createCDSearchWindow(), nullptr); });
        expectOneLine(outcome.errors, "CDSearchWindow.ui");
    }
}

TEST_F(DesktopForms, WholeFormsSayNothing) {
    const Outcome outcome = runWith(
        "MainMenu.ui", [](const std::string&) {},
        [](ZPKFrontEnd& frontEnd) {
            EXPECT_NE(frontEnd.createProgressWindow(), nullptr);
            EXPECT_NE(frontEnd.createCDSearchWindow(), nullptr);
        });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(DesktopForms, FolderNeedBeNoUtf8) {
    forms = folder / "caf\xe9 \x1b[2J";
    std::filesystem::create_directory(forms);
    const Outcome whole = runWith(
        "MainMenu.ui", [](const std::string&) {},
        [](ZPKFrontEnd& frontEnd) {
            EXPECT_NE(frontEnd.createProgressWindow(), nullptr);
            EXPECT_NE(frontEnd.createCDSearchWindow(), nullptr);
        });
    EXPECT_EQ(whole.status, 0);
    EXPECT_EQ(whole.errors, "");
    const Outcome missing = runWith(
        "ProgressWindow.ui", [](const std::string& path) { std::filesystem::remove(path); },
        [](ZPKFrontEnd& frontEnd) { EXPECT_EQ(frontEnd.createProgressWindow(), nullptr); });
    EXPECT_EQ(missing.errors, "Cannot load the form " + folder.path() +
                                  "/caf\\xe9 \\x1b[2J/ProgressWindow.ui: No such file or directory\n");
}

}  // namespace zpk_test
