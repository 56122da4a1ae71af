// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/CpioWriter.h"

#include <archive.h>
#include <archive_entry.h>
#include <sys/stat.h>

#include <cerrno>

#include "Archive/Failure.h"
#include "Archive/GzipWriter.h"

namespace zpk_archive {

namespace {

/// The header has eleven octal digits for the size.
constexpr std::int64_t kSizeLimit = std::int64_t{1} << 33;

struct EntryCloser {
    void operator()(archive_entry* entry) const { archive_entry_free(entry); }
};
using Entry = std::unique_ptr<archive_entry, EntryCloser>;

}  // namespace

struct CpioWriter::Client {
    explicit Client(GzipWriter& gzip) : output(gzip), writer(archive_write_new()) {}
    ~Client() {
        closing = true;
        archive_write_free(writer);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    static la_ssize_t write(archive*, void* data, const void* bytes, std::size_t count) {
        return static_cast<Client*>(data)->take(bytes, count);
    }

    la_ssize_t take(const void* bytes, std::size_t count) {
        // A writer that was given up writes its end mark all the same; it goes nowhere.
        if (closing) {
            return static_cast<la_ssize_t>(count);
        }
        // No exception may pass through the library's own frames.
        try {
            output.write({static_cast<const std::uint8_t*>(bytes), count});
            return static_cast<la_ssize_t>(count);
        } catch (const std::exception& failure) {
            error = failure.what();
            archive_set_error(writer, EIO, "%s", failure.what());
            return -1;
        }
    }

    [[noreturn]] void fail() {
        const char* reason = archive_error_string(writer);
        throw ArchiveFailure(!error.empty()      ? error
                             : reason != nullptr ? reason
                                                 : "the archive cannot be written");
    }

    GzipWriter& output;
    archive* writer;
    bool closing = false;
    std::string error;
};

CpioWriter::CpioWriter(GzipWriter& output) : m_client(std::make_unique<Client>(output)) {
    archive* writer = m_client->writer;
    bool good = archive_write_set_format_cpio_odc(writer) == ARCHIVE_OK &&
                archive_write_set_bytes_per_block(writer, 0) == ARCHIVE_OK &&
                archive_write_set_bytes_in_last_block(writer, 1) == ARCHIVE_OK &&
                archive_write_open(writer, m_client.get(), nullptr, &Client::write, nullptr) == ARCHIVE_OK;
    if (!good) {
        m_client->fail();
    }
}

CpioWriter::~CpioWriter() = default;

void CpioWriter::startMember(const Member& member, std::int64_t inode) {
    if (member.size >= kSizeLimit) {
        throw MemberFailure("a CPIO archive cannot hold a file of 8 GiB or more");
    }
    // The library would write such a name behind a header that announces a shorter one.
    if (member.name.size() > kNameLimit) {
        throw MemberFailure("a CPIO archive cannot hold a path of more than 262142 bytes");
    }
    Entry entry(archive_entry_new());
    archive_entry_set_pathname(entry.get(), member.name.c_str());
    archive_entry_set_mode(entry.get(), member.mode);
    archive_entry_set_size(entry.get(), member.size);
    archive_entry_set_mtime(entry.get(), member.modifiedSeconds, 0);
    archive_entry_set_nlink(entry.get(), member.linkCount);
    archive_entry_set_ino64(entry.get(), inode);
    if (S_ISLNK(member.mode)) {
        archive_entry_set_symlink(entry.get(), member.symbolicLinkTarget.c_str());
    }
    int result = archive_write_header(m_client->writer, entry.get());
    if (result == ARCHIVE_FATAL) {
        m_client->fail();
    }
    if (result != ARCHIVE_OK) {
        const char* reason = archive_error_string(m_client->writer);
        throw MemberFailure(reason != nullptr ? reason : "the header cannot hold it");
    }
}

void CpioWriter::writeData(std::span<const std::uint8_t> bytes) {
    la_ssize_t wrote = archive_write_data(m_client->writer, bytes.data(), bytes.size());
    if (wrote < 0 || static_cast<std::size_t>(wrote) != bytes.size()) {
        m_client->fail();
    }
}

void CpioWriter::finish() {
    if (archive_write_close(m_client->writer) != ARCHIVE_OK) {
        m_client->fail();
    }
}

}  // namespace zpk_archive
