// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/OutputPlace.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "Tests/Tools/zpkpack/PackagerFixture.h"

namespace fs = std::filesystem;

using ::testing::HasSubstr;
using zpk_packager::OutputPlace;

namespace zpk_test {

namespace {

class OutputPlaceTest : public PackagerFixture {
protected:
    std::string checkFailure(const std::string& path, bool replace = true) const {
        return failureOf([&] {
            OutputPlace(path, replace).check(source(), {templateBundle(), m_folder / "Frameworks"});
        });
    }

    std::string putFailure(bool replace) const {
        return failureOf([&] { OutputPlace(output(), replace).put(m_made); });
    }

    void make() const { writeFile(m_made + "/new", "new"); }

    const std::string m_made = m_folder / "made";
};

TEST_F(OutputPlaceTest, TrailingSeparatorsAreNoPartOfIt) {
    EXPECT_EQ(OutputPlace("/a/B.app//", false).path(), "/a/B.app");
}

TEST_F(OutputPlaceTest, WantsTheNameOfABundle) {
    EXPECT_THAT(checkFailure(m_folder / "Out"), HasSubstr("ends in .app"));
    EXPECT_EQ(checkFailure(output()), "");
}

TEST_F(OutputPlaceTest, RefusesATakenPlaceUnlessItIsToBeReplaced) {
    fs::create_symlink("nowhere", m_folder / "Link.app");
    EXPECT_THAT(checkFailure(m_folder / "Link.app", false), HasSubstr("exists; --force replaces it"));
    EXPECT_EQ(checkFailure(m_folder / "Link.app", true), "");
}

TEST_F(OutputPlaceTest, RefusesToTakeAwayWhatTheBundleIsMadeOf) {
    EXPECT_THAT(checkFailure(templateBundle()), HasSubstr("is or holds"));
    fs::create_directory(m_folder / "Holder.app");
    fs::rename(source(), m_folder / "Holder.app/source");
    EXPECT_THAT(failureOf([&] {
                    OutputPlace(m_folder / "Holder.app", true)
                        .check(m_folder / "Holder.app/source", {templateBundle()});
                }),
                HasSubstr("is or holds"));
}

TEST_F(OutputPlaceTest, ALinkToTheSourceDoesNotHideWhereItLies) {
    fs::create_directory(m_folder / "Holder.app");
    fs::rename(source(), m_folder / "Holder.app/source");
    fs::create_directory_symlink(m_folder / "Holder.app/source", m_folder / "source");
    EXPECT_THAT(checkFailure(m_folder / "Holder.app"), HasSubstr("is or holds"));
}

TEST_F(OutputPlaceTest, RefusesToGrowWhatIsPackedOrCopied) {
    EXPECT_THAT(checkFailure(source("Data/Out.app")), HasSubstr("which is packed"));
    EXPECT_THAT(checkFailure(source("Data/../Info/Out.app/")), HasSubstr("which is packed"));
    EXPECT_THAT(checkFailure(templateBundle("Out.app")), HasSubstr("of which the bundle is made"));
    fs::create_directory(m_folder / "Frameworks");
    EXPECT_THAT(checkFailure(m_folder / "Frameworks/Out.app"), HasSubstr("of which the bundle is made"));
    fs::rename(source("Data"), m_folder / "elsewhere");
    fs::create_directory_symlink(m_folder / "elsewhere", source("Data"));
    EXPECT_THAT(checkFailure(m_folder / "elsewhere/Out.app"), HasSubstr("which is packed"));
    EXPECT_EQ(checkFailure(source("Out.app")), "");
}

TEST_F(OutputPlaceTest, GivesTheBundleItsPlace) {
    make();
    EXPECT_EQ(putFailure(false), "");
    EXPECT_EQ(readFile(output("new")), "new");
    EXPECT_FALSE(fs::exists(m_made));
}

TEST_F(OutputPlaceTest, WhatCameMeanwhileStays) {
    make();
    fs::create_directory(output());
    EXPECT_THAT(putFailure(false), HasSubstr("exists"));
    EXPECT_TRUE(fs::is_empty(output()));
    EXPECT_TRUE(fs::exists(m_made + "/new"));
}

TEST_F(OutputPlaceTest, ExchangesTheOldBundleForTheNewOne) {
    make();
    writeFile(output("old"), "old");
    EXPECT_EQ(putFailure(true), "");
    EXPECT_EQ(readFile(output("new")), "new");
    EXPECT_EQ(readFile(m_made + "/old"), "old");
}

TEST_F(OutputPlaceTest, AFailureNamesThePlaceAndKeepsTheOldBundle) {
    writeFile(output("old"), "old");
    EXPECT_EQ(putFailure(true), m_folder / "Out.app: No such file or directory");
    EXPECT_EQ(readFile(output("old")), "old");
}

}  // namespace

}  // namespace zpk_test
