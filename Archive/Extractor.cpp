// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/Extractor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <optional>
#include <utility>

#include "Archive/CpioReader.h"
#include "Archive/ErrorSink.h"
#include "Archive/Failure.h"
#include "Archive/FolderWriter.h"
#include "Archive/SparseFileWriter.h"

namespace zpk_archive {

namespace {

/// Set-user-ID and set-group-ID are never restored.
constexpr mode_t kPermissionBits = 01777;

ModeAndTime modeAndTimeOf(const Member& member) {
    return {member.mode & kPermissionBits, {member.modifiedSeconds, 0}};
}

}  // namespace

Extractor::Extractor(CpioReader& reader, FolderWriter& writer, ErrorSink& sink)
    : m_reader(reader), m_writer(writer), m_sink(sink), m_joiner(writer, sink) {
    m_writer.tellOfFiles(
        [this](const std::string& name, const std::string& reason) { fileFailed(name, reason); });
}

Extractor::~Extractor() {
    m_writer.tellOfFiles({});
}

void Extractor::extractAll() {
    try {
        try {
            extractMembers();
        } catch (const ArchiveFailure&) {
            m_writer.settle();
            throw;
        }
    } catch (const WritingEnded&) {
        return;
    }
}

void Extractor::extractMembers() {
    while (std::optional<Member> member = m_reader.next()) {
        try {
            extractMember(*member);
        } catch (const MemberFailure& failure) {
            report(member->name, failure.what());
        } catch (const VolumeFullFailure& failure) {
            report(member->name, failure.what());
            return;
        } catch (const ArchiveFailure&) {
            report(member->name, "not whole in the archive, so it is left out");
            throw;
        }
        skipData();
    }
    m_writer.settle();
    m_reader.finish();
}

void Extractor::report(const std::string& name, const std::string& reason) {
    // What came before is told of before.
    m_writer.settle();
    m_sink.error(name, reason);
}

void Extractor::fileFailed(const std::string& name, const std::string& reason) {
    m_sink.error(name, reason);
    m_joiner.thingFailed(MemberPath(name));
}

void Extractor::skipData() {
    while (!m_reader.nextData().empty()) {
    }
}

void Extractor::extractMember(const Member& member) {
    MemberPath path(member.name);
    if (path.isFolderItself()) {
        // The folder that is written is the caller's, and so are its mode and time.
        if (!S_ISDIR(member.mode)) {
            throw MemberFailure("the name means the folder itself");
        }
        return;
    }
    if (mayBeAppleDouble(member, path)) {
        extractAppleDouble(member, path);
        return;
    }
    extractByType(member, path);
    if (S_ISDIR(member.mode) || S_ISREG(member.mode)) {
        m_joiner.thingMade(path);
    } else {
        m_joiner.otherMade(path);
    }
}

void Extractor::extractByType(const Member& member, const MemberPath& path) {
    switch (member.mode & S_IFMT) {
        case S_IFDIR:
            m_writer.makeFolder(path, modeAndTimeOf(member));
            break;
        case S_IFREG:
            extractFile(member, path);
            break;
        case S_IFLNK:
            if (!extractLink(member, path)) {
                m_writer.makeSymbolicLink(path, member.symbolicLinkTarget, modeAndTimeOf(member).modified);
                rememberLinkTarget(member, path);
            }
            break;
        case S_IFCHR:
        case S_IFBLK:
        case S_IFIFO:
        case S_IFSOCK:
            throw MemberFailure("devices, FIFOs and sockets are not unpacked");
        default:
            throw MemberFailure("its type is unknown");
    }
}

void Extractor::extractFile(const Member& member, const MemberPath& path) {
    if (!extractLink(member, path) && !sendSmallFile(member, path)) {
        writeNewFile(member, path, nullptr);
        rememberLinkTarget(member, path);
    }
}

bool Extractor::sendSmallFile(const Member& member, const MemberPath& path) {
    if (member.linkCount > 1 || member.size > static_cast<std::int64_t>(FolderWriter::kSmallFile) ||
        m_joiner.awaitsNext()) {
        return false;
    }
    m_writer.sendFile(path, member.name, wholeData(path), modeAndTimeOf(member));
    return true;
}

std::span<const std::uint8_t> Extractor::wholeData(const MemberPath& path) {
    if (const std::optional<std::span<const std::uint8_t>> bytes = m_reader.wholeData()) {
        return *bytes;
    }
    m_gathered.clear();
    try {
        for (auto bytes = m_reader.nextData(); !bytes.empty(); bytes = m_reader.nextData()) {
            m_gathered.insert(m_gathered.end(), bytes.begin(), bytes.end());
        }
    } catch (const ArchiveFailure&) {
        // What stands in its place goes all the same.
        m_writer.makeFile(path);
        removeHalf(path);
        throw;
    }
    return m_gathered;
}

bool Extractor::extractLink(const Member& member, const MemberPath& path) {
    LinkTable::File* const file = m_links.find(member);
    if (file == nullptr) {
        throwIfDataAreMissed(member);
        return false;
    }
    if (!isSizeOf(*file, member)) {
        return false;
    }
    m_writer.makeHardLink(path, MemberPath(file->name), file->identity);
    if (S_ISREG(member.mode) && member.size > 0 && file->size == 0) {
        ZPKFileDescriptor opened = m_writer.reopenFile(path, file->identity);
        fill(opened.get(), nullptr);
        m_writer.closeFileForNow(std::move(opened), path, modeAndTimeOf(member));
        file->size = member.size;
    }
    m_links.preferName(*file, path.text());
    m_links.countName(member, *file);
    return true;
}

bool Extractor::isSizeOf(const LinkTable::File& file, const Member& member) {
    // In newc archives all names but the last have size 0.
    return !S_ISREG(member.mode) || file.size == member.size ||
           (member.dataComeWithLastName && (file.size == 0 || member.size == 0));
}

void Extractor::throwIfDataAreMissed(const Member& member) const {
    if (member.linkCount > 1 && member.dataComeWithLastName && member.size > 0 &&
        m_links.hasForgottenEmptyFiles()) {
        throw MemberFailure("the archive has more files with several names than can be kept in mind");
    }
}

void Extractor::rememberLinkTarget(const Member& member, const MemberPath& path) {
    if (member.linkCount > 1) {
        if (const std::optional<FileIdentity> identity = m_writer.identify(path)) {
            m_links.remember(member, path.text(), *identity);
        }
    }
}

void Extractor::writeNewFile(const Member& member, const MemberPath& path, const std::string* contents) {
    ZPKFileDescriptor file = m_writer.makeFile(path);
    try {
        fill(file.get(), contents);
        bool dataMayFollow = member.dataComeWithLastName && member.linkCount > 1 && member.size == 0;
        if (dataMayFollow || contents != nullptr) {
            m_writer.closeFileForNow(std::move(file), path, modeAndTimeOf(member));
        } else {
            m_writer.closeFile(std::move(file), modeAndTimeOf(member));
        }
    } catch (...) {
        removeHalf(path);
        throw;
    }
}

void Extractor::removeHalf(const MemberPath& path) {
    // Half a file would pass for a whole one.
    try {
        m_writer.remove(path);
    } catch (const MemberFailure& failure) {
        m_sink.error(path.text(), std::string("half of it is left: ") + failure.what());
    }
}

void Extractor::fill(int descriptor, const std::string* contents) {
    SparseFileWriter file(descriptor);
    if (contents != nullptr) {
        file.write({reinterpret_cast<const std::uint8_t*>(contents->data()), contents->size()});
    } else {
        for (auto bytes = m_reader.nextData(); !bytes.empty(); bytes = m_reader.nextData()) {
            file.write(bytes);
        }
    }
    file.finish();
}

bool Extractor::mayBeAppleDouble(const Member& member, const MemberPath& path) {
    return S_ISREG(member.mode) && member.linkCount <= 1 &&
           static_cast<std::size_t>(member.size) <= kAppleDoubleLimit &&
           AttributeJoiner::isCompanionName(path.leaf());
}

void Extractor::extractAppleDouble(const Member& member, const MemberPath& path) {
    // Its file may be among what was sent.
    m_writer.settle();
    std::string contents;
    contents.reserve(static_cast<std::size_t>(member.size));
    for (auto bytes = m_reader.nextData(); !bytes.empty(); bytes = m_reader.nextData()) {
        contents.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    const std::optional<AttributeMap> attributes = decodeAppleDouble(contents);
    if (!attributes || !m_joiner.takeAtOnce(path, *attributes)) {
        writeNewFile(member, path, &contents);
        m_joiner.companionMade(path, attributes.has_value());
    }
}

void Extractor::finish() {
    m_joiner.finish();
    m_writer.finish();
}

}  // namespace zpk_archive
