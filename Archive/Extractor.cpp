// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/Extractor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <string_view>

#include "Archive/CpioReader.h"
#include "Archive/ErrorSink.h"
#include "Archive/ExtendedAttributes.h"
#include "Archive/Failure.h"
#include "Archive/FolderWriter.h"
#include "Archive/SparseFileWriter.h"

namespace zpk_archive {

namespace {

/// Set-user-ID and set-group-ID are never restored.
constexpr mode_t kPermissionBits = 01777;

ModeAndTime modeAndTimeOf(const Member& member) {
    return {member.mode & kPermissionBits, {member.modifiedSeconds, member.modifiedNanoseconds}};
}

/// The file whose attributes an AppleDouble file carries.
MemberPath ownerOf(const MemberPath& path) {
    return path.sibling(std::string_view(path.leaf()).substr(kAppleDoublePrefix.size()));
}

}  // namespace

void Extractor::extractAll() {
    while (std::optional<Member> member = m_reader.next()) {
        try {
            extractMember(*member);
        } catch (const MemberFailure& failure) {
            m_sink.error(member->name, failure.what());
        } catch (const ArchiveFailure&) {
            m_sink.error(member->name, "not whole in the archive, so it is left out");
            throw;
        }
        skipData();
    }
    m_reader.finish();
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
    if (member.size < 0) {
        throw MemberFailure("the size is impossible");
    }
    if (mayBeAppleDouble(member, path)) {
        extractAppleDouble(member, path);
        return;
    }
    extractByType(member, path);
    if (S_ISDIR(member.mode) || S_ISREG(member.mode)) {
        m_extracted.push_back(path.hash());
    }
    m_last = std::move(path);
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
    if (!extractLink(member, path)) {
        writeNewFile(member, path, nullptr);
        rememberLinkTarget(member, path);
    }
}

bool Extractor::extractLink(const Member& member, const MemberPath& path) {
    if (member.hardLinkTarget.empty()) {
        return false;
    }
    auto found = m_linkTargets.find(member.hardLinkTarget);
    bool hasData = S_ISREG(member.mode) && member.size > 0;
    if (found == m_linkTargets.end()) {
        bool standsAlone = S_ISLNK(member.mode) ? !member.symbolicLinkTarget.empty()
                                                : hasData || !member.dataComeWithLastName;
        if (standsAlone) {
            return false;
        }
        throw MemberFailure("the file that it is a link to was not unpacked");
    }
    LinkTarget& target = found->second;
    if (isStranger(member, target)) {
        return false;
    }
    m_writer.makeHardLink(path, target.path, target.identity);
    if (hasData && target.size == 0) {
        ZPKFileDescriptor file = m_writer.reopenFile(path, target.identity);
        fill(file.get(), nullptr);
        m_writer.closeFileForNow(std::move(file), path, modeAndTimeOf(member));
        target.size = member.size;
    }
    return true;
}

bool Extractor::isStranger(const Member& member, const LinkTarget& target) {
    // Old headers have few bits for the inode number, so that strangers may share one; what differs in
    // size, time or mode is a file of its own. In newc archives all names but the last have size 0.
    bool sizesFit = !S_ISREG(member.mode) || target.size == member.size ||
                    (member.dataComeWithLastName && (target.size == 0 || member.size == 0));
    return !sizesFit || target.modifiedSeconds != member.modifiedSeconds || target.mode != member.mode;
}

void Extractor::rememberLinkTarget(const Member& member, const MemberPath& path) {
    if (member.linkCount <= 1) {
        return;
    }
    if (const std::optional<FileIdentity> identity = m_writer.identify(path)) {
        const std::int64_t size = S_ISREG(member.mode) ? member.size : 0;
        m_linkTargets[member.name] = {path, *identity, size, member.modifiedSeconds, member.mode};
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

bool Extractor::mayBeAppleDouble(const Member& member, const MemberPath& path) const {
    const std::string_view name = path.leaf();
    return S_ISREG(member.mode) && member.hardLinkTarget.empty() && member.linkCount <= 1 &&
           static_cast<std::size_t>(member.size) <= kAppleDoubleLimit &&
           name.starts_with(kAppleDoublePrefix) && name != "._" && name != "._." && name != "._..";
}

void Extractor::extractAppleDouble(const Member& member, const MemberPath& path) {
    std::string contents;
    for (auto bytes = m_reader.nextData(); !bytes.empty(); bytes = m_reader.nextData()) {
        contents.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    std::optional<AttributeMap> attributes = decodeAppleDouble(contents);
    const MemberPath owner = ownerOf(path);
    const bool ownerJustCame = attributes && owner == m_last;
    if (ownerJustCame && applyAttributes(path, owner, *attributes)) {
        return;
    }
    writeNewFile(member, path, &contents);
    m_extracted.push_back(path.hash());
    if (attributes && !ownerJustCame) {
        m_waiting.push_back(path);
    }
}

bool Extractor::applyAttributes(const MemberPath& path, const MemberPath& owner,
                                const AttributeMap& attributes) {
    try {
        writeAttributes(m_writer.locate(owner).get(), attributes);
        return true;
    } catch (const MemberFailure& failure) {
        m_sink.warning(owner.text(), std::string("its extended attributes are kept in the file ") +
                                         path.leaf() + " (" + failure.what() + ")");
        return false;
    }
}

void Extractor::joinWithOwner(const MemberPath& path) {
    const MemberPath owner = ownerOf(path);
    if (!std::binary_search(m_extracted.begin(), m_extracted.end(), owner.hash())) {
        return;
    }
    std::string contents = m_writer.readFile(path, kAppleDoubleLimit);
    std::optional<AttributeMap> attributes = decodeAppleDouble(contents);
    if (attributes && applyAttributes(path, owner, *attributes)) {
        m_writer.remove(path);
    }
}

void Extractor::finish() {
    std::sort(m_extracted.begin(), m_extracted.end());
    for (const MemberPath& path : m_waiting) {
        try {
            joinWithOwner(path);
        } catch (const MemberFailure& failure) {
            m_sink.error(path.text(), failure.what());
        }
    }
    m_waiting.clear();
    m_writer.finish(
        [this](const std::string& path, const std::string& reason) { m_sink.error(path, reason); });
}

}  // namespace zpk_archive
