// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/CpioReader.h"

#include <archive.h>
#include <archive_entry.h>

#include <cerrno>

#include "Archive/Failure.h"
#include "Archive/PlainStream.h"

namespace zpk_archive {

namespace {

/// A header, its name and a link's text together stay far below this. The library itself would gather
/// a name of any announced length in memory, and would search for a next header through any rubbish.
constexpr std::size_t kHeaderLimit = std::size_t{4} << 20;

std::string text(const char* bytes) {
    return bytes == nullptr ? std::string() : std::string(bytes);
}

}  // namespace

struct CpioReader::Client {
    explicit Client(PlainStream& plain) : stream(plain), reader(archive_read_new()) {}
    ~Client() { archive_read_free(reader); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    static la_ssize_t read(archive*, void* data, const void** bytes) {
        return static_cast<Client*>(data)->supply(bytes);
    }

    la_ssize_t supply(const void** bytes) {
        // No exception may pass through the library's own frames.
        try {
            if (inHeader && suppliedInHeader > kHeaderLimit) {
                throw ArchiveFailure("the archive is damaged (no member's header where one is due)");
            }
            std::span<const std::uint8_t> block = stream.next();
            suppliedInHeader += block.size();
            *bytes = block.data();
            return static_cast<la_ssize_t>(block.size());
        } catch (const std::exception& failure) {
            error = failure.what();
            archive_set_error(reader, EIO, "%s", failure.what());
            return -1;
        }
    }

    PlainStream& stream;
    archive* reader;
    bool inHeader = false;
    std::size_t suppliedInHeader = 0;
    std::string error;
};

CpioReader::CpioReader(PlainStream& stream) : m_client(std::make_unique<Client>(stream)) {
    m_client->inHeader = true;
    archive* reader = m_client->reader;
    archive_read_support_format_cpio(reader);
    if (archive_read_open(reader, m_client.get(), nullptr, &Client::read, nullptr) != ARCHIVE_OK) {
        fail("not a CPIO archive");
    }
}

CpioReader::~CpioReader() = default;

void CpioReader::fail(const char* otherwise) {
    throw ArchiveFailure(m_client->error.empty() ? otherwise : m_client->error);
}

std::optional<Member> CpioReader::next() {
    m_client->inHeader = true;
    m_client->suppliedInHeader = 0;
    bool first = archive_file_count(m_client->reader) == 0;
    archive_entry* entry = nullptr;
    int result = archive_read_next_header(m_client->reader, &entry);
    m_client->inHeader = false;
    if (result == ARCHIVE_EOF) {
        return std::nullopt;
    }
    if (result != ARCHIVE_OK) {
        // Bytes skipped in search of a header count too: what is found behind them may be the inside of
        // a file.
        fail(first ? "not a CPIO archive" : "the archive is damaged or ends without its end mark");
    }
    Member member;
    member.name = text(archive_entry_pathname(entry));
    member.mode = archive_entry_mode(entry);
    member.size = archive_entry_size(entry);
    member.modifiedSeconds = archive_entry_mtime(entry);
    member.modifiedNanoseconds = archive_entry_mtime_nsec(entry);
    int format = archive_format(m_client->reader);
    member.dataComeWithLastName =
        format == ARCHIVE_FORMAT_CPIO_SVR4_NOCRC || format == ARCHIVE_FORMAT_CPIO_SVR4_CRC;
    member.linkCount = archive_entry_nlink(entry);
    member.symbolicLinkTarget = text(archive_entry_symlink(entry));
    member.hardLinkTarget = text(archive_entry_hardlink(entry));
    return member;
}

std::span<const std::uint8_t> CpioReader::nextData() {
    const void* bytes = nullptr;
    std::size_t size = 0;
    la_int64_t offset = 0;
    int result = archive_read_data_block(m_client->reader, &bytes, &size, &offset);
    if (result == ARCHIVE_EOF) {
        return {};
    }
    if (result != ARCHIVE_OK) {
        fail("the archive ends in the middle of this member");
    }
    return {static_cast<const std::uint8_t*>(bytes), size};
}

void CpioReader::finish() {
    while (!m_client->stream.next().empty()) {
    }
}

}  // namespace zpk_archive
