// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/Archive.h"

#include <sys/stat.h>

#include <cstdlib>
#include <memory>

#include "Archive/CpioReader.h"
#include "Archive/CpioWriter.h"
#include "Archive/Extractor.h"
#include "Archive/Failure.h"
#include "Archive/FolderWriter.h"
#include "Archive/GzipWriter.h"
#include "Archive/OutputFile.h"
#include "Archive/PlainStream.h"
#include "Archive/TreePacker.h"

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

/// Runs a step; what ends it early is reported under `name`.
template <typename Step>
void reportFailure(const std::string& name, ErrorSink& sink, const Step& step) {
    try {
        step();
    } catch (const std::exception& failure) {
        sink.error(name, failure.what());
    }
}

/// The name that the archive's one top-level entry gets.
std::string topName(std::string source) {
    while (source.size() > 1 && source.back() == '/') {
        source.pop_back();
    }
    std::string leaf = source.substr(source.rfind('/') + 1);
    if (leaf == "." || leaf == ".." || leaf.empty()) {
        std::unique_ptr<char, decltype(&std::free)> real(::realpath(source.c_str(), nullptr), &std::free);
        leaf = real ? std::string(real.get()) : std::string();
        leaf.erase(0, leaf.rfind('/') + 1);
    }
    if (leaf.empty()) {
        throw ArchiveFailure("it has no name to be packed under");
    }
    // Readers take a member of this name for the end of the archive.
    if (leaf == "TRAILER!!!") {
        throw ArchiveFailure("a CPIO archive cannot hold a thing of this name");
    }
    return leaf;
}

MemberDescription describe(const Member& member) {
    MemberDescription description;
    description.name = member.name;
    description.permissions = member.mode & 07777;
    description.modifiedSeconds = member.modifiedSeconds;
    if (S_ISDIR(member.mode)) {
        description.type = MemberType::Folder;
    } else if (!member.hardLinkTarget.empty()) {
        description.type = MemberType::HardLink;
        description.linkTarget = member.hardLinkTarget;
    } else if (S_ISLNK(member.mode)) {
        description.type = MemberType::SymbolicLink;
        description.linkTarget = member.symbolicLinkTarget;
    } else if (S_ISREG(member.mode)) {
        description.type = MemberType::RegularFile;
    }
    if (S_ISREG(member.mode) && member.size > 0) {
        description.size = static_cast<std::uint64_t>(member.size);
    }
    return description;
}

}  // namespace

bool create(const std::string& source, const std::string& archive, ErrorSink& sink) {
    CountingSink counted(sink);
    std::unique_ptr<OutputFile> output;
    reportFailure(archive, counted, [&] { output = std::make_unique<OutputFile>(archive); });
    if (!output) {
        return false;
    }
    std::string name;
    reportFailure(source, counted, [&] { name = topName(source); });
    reportFailure(name.empty() ? source : archive, counted, [&] {
        if (name.empty()) {
            return;
        }
        GzipWriter gzip(*output);
        CpioWriter writer(gzip);
        TreePacker(writer, *output, counted).pack(source, name);
        writer.finish();
        gzip.finish();
        output->commit();
    });
    return !counted.failed();
}

bool extract(const std::string& archive, const std::string& folder, ErrorSink& sink) {
    CountingSink counted(sink);
    std::unique_ptr<PlainStream> stream;
    std::unique_ptr<FolderWriter> writer;
    reportFailure(archive, counted, [&] { stream = std::make_unique<PlainStream>(archive); });
    if (stream) {
        reportFailure(folder, counted, [&] { writer = std::make_unique<FolderWriter>(folder); });
    }
    if (writer) {
        reportFailure(archive, counted, [&] {
            CpioReader reader(*stream);
            Extractor extractor(reader, *writer, counted);
            reportFailure(archive, counted, [&] { extractor.extractAll(); });
            extractor.finish();
        });
    }
    return !counted.failed();
}

bool list(const std::string& archive, const std::function<void(const MemberDescription&)>& visit,
          ErrorSink& sink) {
    CountingSink counted(sink);
    reportFailure(archive, counted, [&] {
        PlainStream stream(archive);
        CpioReader reader(stream);
        while (std::optional<Member> member = reader.next()) {
            visit(describe(*member));
            while (!reader.nextData().empty()) {
            }
        }
        reader.finish();
    });
    return !counted.failed();
}

}  // namespace zpk_archive
