// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/Archive.h"

#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <new>

#include "Archive/BlockPipeline.h"
#include "Archive/CpioReader.h"
#include "Archive/CpioWriter.h"
#include "Archive/ExtractionCage.h"
#include "Archive/Extractor.h"
#include "Archive/Failure.h"
#include "Archive/FolderWriter.h"
#include "Archive/GzipWriter.h"
#include "Archive/InputFile.h"
#include "Archive/LinkTable.h"
#include "Archive/OutputFile.h"
#include "Archive/PlainStream.h"
#include "Archive/TreePacker.h"
#include "Base/ZPKPath.h"

namespace zpk_archive {

namespace {

/// Passes everything on and remembers whether there was an error.
class CountingSink : public ErrorSink {
public:
    explicit CountingSink(ErrorSink& next) : m_next(next) {}

    void error(const std::string& name, const std::string& reason) override {
        m_failed = true;
        m_next.error(name, reason);
    }
    void warning(const std::string& name, const std::string& reason) override {
        m_next.warning(name, reason);
    }

    bool failed() const { return m_failed; }

private:
    ErrorSink& m_next;
    bool m_failed = false;
};

/// What ended a step early, in words for a person.
std::string reasonOf(const std::exception& failure) {
    const bool isOutOfMemory = dynamic_cast<const std::bad_alloc*>(&failure) != nullptr;
    return isOutOfMemory ? ZPKFailure::systemReason(ENOMEM) : failure.what();
}

/// Runs a step; what ends it early is reported under `name`.
template <typename Step>
void reportFailure(const std::string& name, ErrorSink& sink, const Step& step) {
    try {
        step();
    } catch (const std::exception& failure) {
        sink.error(name, reasonOf(failure));
    }
}

/// The name that the archive's one top-level entry gets. Throws ArchiveFailure.
std::string topName(const std::string& source) {
    std::string leaf = ZPKPath::lastComponent(source);
    if (leaf == "." || leaf == "..") {
        leaf = ZPKPath::lastComponent(ZPKPath::resolved(source));
    }
    if (leaf.empty() || leaf == "/") {
        throw ArchiveFailure("it has no name to be packed under");
    }
    // Readers take a member of this name for the end of the archive.
    if (leaf == "TRAILER!!!") {
        throw ArchiveFailure("a CPIO archive cannot hold a thing of this name");
    }
    return leaf;
}

MemberDescription describe(const Member& member, LinkTable& links) {
    MemberDescription description;
    LinkTable::File* const file = S_ISDIR(member.mode) ? nullptr : links.find(member);
    description.name = member.name;
    description.permissions = member.mode & 07777;
    description.modifiedSeconds = member.modifiedSeconds;
    if (S_ISDIR(member.mode)) {
        description.type = MemberType::Folder;
    } else if (file != nullptr) {
        description.type = MemberType::HardLink;
        description.linkTarget = file->name;
        links.countName(member, *file);
    } else if (S_ISLNK(member.mode)) {
        description.type = MemberType::SymbolicLink;
        description.linkTarget = member.symbolicLinkTarget;
    } else if (S_ISREG(member.mode)) {
        description.type = MemberType::RegularFile;
    }
    // A link's text has been read already; anything else may bring data, even if nothing is made of them.
    if (!S_ISLNK(member.mode)) {
        description.size = static_cast<std::uint64_t>(member.size);
    }
    if (file == nullptr && !S_ISDIR(member.mode)) {
        links.remember(member, member.name, {});
    }
    return description;
}

void extractOpened(InputFile input, FolderWriter& writer, const std::string& archive, ErrorSink& sink) {
    PlainStream stream(std::move(input));
    CpioReader reader(stream);
    Extractor extractor(reader, writer, sink);
    reportFailure(archive, sink, [&] { extractor.extractAll(); });
    extractor.finish();
}

/// Calls `enter` with the open folder before anything is read.
template <typename OpenInput, typename Enter>
bool extractFrom(const std::string& archive, const std::string& folder, ErrorSink& sink,
                 const OpenInput& openInput, const Enter& enter) {
    CountingSink counted(sink);
    std::unique_ptr<InputFile> input;
    std::unique_ptr<FolderWriter> writer;
    reportFailure(archive, counted, [&] { input = std::make_unique<InputFile>(openInput()); });
    if (input) {
        const auto report = [&](const std::string& path, const std::string& reason) {
            counted.error(path, reason);
        };
        reportFailure(folder, counted, [&] { writer = std::make_unique<FolderWriter>(folder, report); });
    }
    if (writer) {
        enter(writer->descriptor());
        reportFailure(archive, counted, [&] { extractOpened(std::move(*input), *writer, archive, counted); });
    }
    return !counted.failed();
}

template <typename OpenInput>
bool readFrom(const std::string& archive, const MemberReader& wants, ErrorSink& sink,
              const OpenInput& openInput) {
    CountingSink counted(sink);
    reportFailure(archive, counted, [&] {
        PlainStream stream(openInput());
        CpioReader reader(stream);
        LinkTable links;
        while (std::optional<Member> member = reader.next()) {
            if (const DataTaker take = wants(describe(*member, links))) {
                for (auto piece = reader.nextData(); !piece.empty(); piece = reader.nextData()) {
                    take(piece);
                }
            }
        }
        reader.finish();
    });
    return !counted.failed();
}

/// Of one who wants no data.
MemberReader readerOf(const std::function<void(const MemberDescription&)>& visit) {
    return [&visit](const MemberDescription& member) {
        visit(member);
        return DataTaker();
    };
}

void stayOutside(int) {}

}  // namespace

bool create(const std::string& source, const std::string& archive, ErrorSink& sink,
            std::optional<std::int64_t> time, const ByteCounter& packed) {
    CountingSink counted(sink);
    std::string name;
    ZPKFileDescriptor opened;
    reportFailure(source, counted, [&] {
        opened = TreePacker::openSource(source);
        name = topName(source);
    });
    if (counted.failed()) {
        return false;
    }
    reportFailure(archive, counted, [&] {
        OutputFile output(archive);
        GzipWriter gzip(output);
        CpioWriter writer(gzip);
        TreePacker(writer, output, counted, time, packed).pack(std::move(opened), name);
        writer.finish();
        gzip.finish();
        output.commit();
    });
    return !counted.failed();
}

bool extract(const std::string& archive, const std::string& folder, ErrorSink& sink) {
    return extractFrom(
        archive, folder, sink, [&] { return InputFile(archive); }, stayOutside);
}

bool extract(const std::string& name, const ByteSource& source, const std::string& folder, ErrorSink& sink) {
    return extractFrom(
        name, folder, sink, [&] { return InputFile(source); }, stayOutside);
}

bool extractInCage(const std::string& archive, const std::string& folder, ErrorSink& sink) {
    const auto enterCage = [](int opened) {
        BlockPipeline::suitableWorkers();
        ExtractionCage::enter(opened);
    };
    return extractFrom(
        archive, folder, sink, [&] { return InputFile(archive); }, enterCage);
}

bool list(const std::string& archive, const std::function<void(const MemberDescription&)>& visit,
          ErrorSink& sink) {
    return readFrom(archive, readerOf(visit), sink, [&] { return InputFile(archive); });
}

bool list(const std::string& name, const ByteSource& source,
          const std::function<void(const MemberDescription&)>& visit, ErrorSink& sink) {
    return read(name, source, readerOf(visit), sink);
}

bool read(const std::string& name, const ByteSource& source, const MemberReader& reader, ErrorSink& sink) {
    return readFrom(name, reader, sink, [&] { return InputFile(source); });
}

}  // namespace zpk_archive
