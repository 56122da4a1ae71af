// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/GzipWriter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Archive/OutputFile.h"
#include "Tests/Archive/ArchiveFixture.h"
#include "Tests/Support/TemporaryFolder.h"

namespace {

using namespace zpk_archive;

/// Bytes of so many values, in no order.
std::string noiseOf(unsigned values, std::size_t size) {
    std::mt19937 numbers(1);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(numbers() % values);
    }
    return bytes;
}

class GzipWriterTest : public ::testing::Test {
protected:
    /// Bytes of the archive for each plain byte; every reader of the machine gets the same out of it.
    double packedPart(const std::string& plain) {
        OutputFile output(m_folder / "packed.gz");
        GzipWriter writer(output);
        writer.write({reinterpret_cast<const std::uint8_t*>(plain.data()), plain.size()});
        writer.finish();
        output.commit();
        const std::string packed = m_folder / "packed.gz";
        for (const std::string reader : {"gzip -dc", "pigz -dc", "bsdcat",
                                         "python3 -c 'import gzip, sys; "
                                         "sys.stdout.buffer.write(gzip.open(sys.stdin.buffer).read())' <"}) {
            zpk_test::shell(reader + " '" + packed + "' > '" + (m_folder / "plain") + "'");
            EXPECT_TRUE(zpk_test::readFile(m_folder / "plain") == plain) << reader;
        }
        return static_cast<double>(zpk_test::readFile(packed).size()) / static_cast<double>(plain.size());
    }

    const zpk_test::TemporaryFolder m_folder;
};

TEST_F(GzipWriterTest, WhatEveryReaderReadsIsNeverMuchLargerThanBefore) {
    for (const unsigned values : {256U, 250U, 20U}) {
        for (const std::size_t size : {std::size_t{1}, std::size_t{1200017}}) {
            const double limit = static_cast<double>(size) + 100 + 0.001 * static_cast<double>(size);
            EXPECT_LE(packedPart(noiseOf(values, size)), limit / static_cast<double>(size))
                << values << " " << size;
        }
    }
}

TEST_F(GzipWriterTest, WhatDeflatingGainsMoreThanATwelfthOfIsDeflated) {
    EXPECT_LT(packedPart(noiseOf(128, 1200000)), 0.89);
}

#ifdef ZPK_TEST_STATIC
// The machine's own library stores only what gains nothing.
TEST_F(GzipWriterTest, WhatDeflatingGainsLessThanATwelfthOfIsStored) {
    EXPECT_GE(packedPart(noiseOf(220, 1200000)), 1);
}
#endif

}  // namespace
