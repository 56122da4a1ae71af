// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Archive/AttributeJoiner.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "Archive/ErrorSink.h"
#include "Archive/ExtendedAttributes.h"
#include "Archive/Failure.h"
#include "Archive/FolderWriter.h"

namespace zpk_archive {

namespace {

/// Eight bytes each.
constexpr std::size_t kMadeLimit = std::size_t{1} << 20;

constexpr std::size_t kWaitingLimit = std::size_t{2} << 20;

/// The file whose attributes an AppleDouble file carries.
MemberPath ownerOf(const MemberPath& companion) {
    return companion.sibling(std::string_view(companion.leaf()).substr(kAppleDoublePrefix.size()));
}

}  // namespace

bool AttributeJoiner::isCompanionName(const char* leaf) {
    const std::string_view name = leaf;
    return name.starts_with(kAppleDoublePrefix) && name != "._" && name != "._." && name != "._..";
}

bool AttributeJoiner::takeAtOnce(const MemberPath& companion, const AttributeMap& attributes) {
    return ownerOf(companion) == m_last && apply(companion, attributes);
}

void AttributeJoiner::companionMade(const MemberPath& companion, bool mayJoinLater) {
    remember(companion);
    m_lastIsWaiting = false;
    if (!mayJoinLater || ownerOf(companion) == m_last) {
        return;
    }
    std::string text = companion.text();
    const std::size_t size = sizeof(std::string) + text.size();
    if (m_waitingSize + size > kWaitingLimit) {
        keep(companion, "too many wait for their files");
        return;
    }
    m_waitingSize += size;
    m_waiting.push_back(std::move(text));
    m_lastIsWaiting = true;
}

void AttributeJoiner::thingMade(const MemberPath& path) {
    remember(path);
    m_last = path;
    // Most archives that put an AppleDouble file first put its file next; so few have to wait.
    if (std::exchange(m_lastIsWaiting, false)) {
        const MemberPath companion(m_waiting.back());
        if (ownerOf(companion) == path) {
            m_waitingSize -= sizeof(std::string) + m_waiting.back().size();
            m_waiting.pop_back();
            join(companion);
        }
    }
}

void AttributeJoiner::thingFailed(const MemberPath& path) {
    // Looked for in the end, once for all: an archive may hold more of these than members that are made. One
    // that was forgotten is in neither list.
    if (!m_hasForgotten) {
        m_failed.push_back(path.hash());
    }
    if (m_last == path) {
        m_last = MemberPath();
    }
}

void AttributeJoiner::otherMade(const MemberPath& path) {
    m_lastIsWaiting = false;
    m_last = path;
}

void AttributeJoiner::remember(const MemberPath& path) {
    if (m_made.size() < kMadeLimit) {
        // Once for all: a vector that grows holds its contents twice.
        m_made.reserve(kMadeLimit);
        m_made.push_back(path.hash());
    } else {
        m_hasForgotten = true;
    }
}

bool AttributeJoiner::isMade(const MemberPath& path) const {
    const auto timesIn = [hash = path.hash()](const std::vector<std::size_t>& hashes) {
        const auto [first, end] = std::equal_range(hashes.begin(), hashes.end(), hash);
        return end - first;
    };
    return timesIn(m_made) > timesIn(m_failed);
}

void AttributeJoiner::keep(const MemberPath& companion, const char* reason) {
    m_sink.warning(ownerOf(companion).text(), std::string("its extended attributes are kept in the file ") +
                                                  companion.leaf() + " (" + reason + ")");
}

bool AttributeJoiner::apply(const MemberPath& companion, const AttributeMap& attributes) {
    try {
        writeAttributes(m_writer.locate(ownerOf(companion)).get(), attributes);
        return true;
    } catch (const MemberFailure& failure) {
        keep(companion, failure.what());
        return false;
    }
}

void AttributeJoiner::join(const MemberPath& companion) {
    const std::string contents = m_writer.readFile(companion, kAppleDoubleLimit);
    const std::optional<AttributeMap> attributes = decodeAppleDouble(contents);
    if (attributes && apply(companion, *attributes)) {
        m_writer.remove(companion);
    }
}

void AttributeJoiner::joinKnown(const MemberPath& companion) {
    const MemberPath owner = ownerOf(companion);
    if (isMade(owner)) {
        join(companion);
    } else if (m_hasForgotten && m_writer.identify(owner)) {
        keep(companion, "too many members came between them");
    }
}

void AttributeJoiner::finish() {
    std::sort(m_made.begin(), m_made.end());
    std::sort(m_failed.begin(), m_failed.end());
    for (const std::string& companion : std::exchange(m_waiting, {})) {
        try {
            joinKnown(MemberPath(companion));
        } catch (const MemberFailure& failure) {
            m_sink.error(companion, failure.what());
        }
    }
}

}  // namespace zpk_archive
