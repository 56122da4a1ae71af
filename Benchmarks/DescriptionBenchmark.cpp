// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

// Loading a condition description beside the same load by another parser. pugixml reads the file,
// and then either the same values are taken from its own tree into equal structs, or its tree is
// converted into ours, as it would have to be behind `CXMLParser`, and the description built from that.

#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "Common/CXMLAttribute.h"
#include "Common/CXMLElement.h"
#include "Common/CXMLText.h"
#include "Description/CZPKXMLLoader.h"
#include "Description/ZPKXMLDefine.h"

namespace {

using namespace varno_zpk;

constexpr int kSmall = 3;
constexpr int kLarge = 5000;

void appendEntries(std::string& xml, int count, std::string_view start, std::string_view end) {
    for (int index = 0; index < count; ++index) {
        xml.append("        <").append(start).append(std::to_string(index)).append(end).append("/>\n");
    }
}

/// A description with about `count` entries of each kind.
std::string makeDescription(int count) {
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<UpdateInfo XmlVersion=\"1.0\">\n    <Conditions>\n";
    appendEntries(xml, count, "Registry KeyName=\"Software\\Varno\\Suite ", "\"");
    appendEntries(xml, count, "UIMLog Signature=\"com.varno.suite.component-", "\"");
    appendEntries(xml, count, "UninstallXml AppName=\"VarnoSuite", ".xml\"");
    appendEntries(xml, count, "Disc FilePath=\"Setup/Suite", "/*.pkg\"");
    xml += "    </Conditions>\n    <TargetItems>\n";
    appendEntries(xml, count, "ItemInfo DisplayName=\"Varno Suite &amp; Tools ", "\"");
    xml += "    </TargetItems>\n</UpdateInfo>\n";
    return xml;
}

class DescriptionFile {
public:
    explicit DescriptionFile(int count) {
        const int descriptor = mkstemp(m_path.data());
        close(descriptor);
        std::ofstream(m_path, std::ios::binary) << makeDescription(count);
    }
    ~DescriptionFile() { unlink(m_path.c_str()); }
    DescriptionFile(const DescriptionFile&) = delete;
    DescriptionFile& operator=(const DescriptionFile&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path = "/tmp/zpk-benchmark-XXXXXX";
};

// Equal to the description classes, entry by entry.
struct Entry {
    std::string value;
};
using Entries = std::vector<std::unique_ptr<Entry>>;
struct Conditions {
    Entries registries;
    Entries uimLogs;
    Entries uninstallXmls;
    Entries discs;
};
struct UpdateInfo {
    std::string xmlVersion;
    std::unique_ptr<Conditions> conditions;
    std::unique_ptr<Entries> targetItems;
};

std::unique_ptr<Entry> readEntry(const pugi::xml_node& node, std::string_view name) {
    auto entry = std::make_unique<Entry>();
    for (const pugi::xml_attribute& attribute : node.attributes()) {
        if (attribute.name() == name) {
            entry->value = attribute.value();
        }
    }
    return entry;
}

std::unique_ptr<Conditions> readConditions(const pugi::xml_node& node) {
    auto conditions = std::make_unique<Conditions>();
    for (const pugi::xml_node& child : node.children()) {
        const std::string_view name = child.name();
        if (name == TAG_REGISTRY) {
            conditions->registries.push_back(readEntry(child, ATTR_KEYNAME));
        } else if (name == TAG_UIMLOG) {
            conditions->uimLogs.push_back(readEntry(child, ATTR_SIGNATURE));
        } else if (name == TAG_UNINSTALLXML) {
            conditions->uninstallXmls.push_back(readEntry(child, ATTR_APPNAME));
        } else if (name == TAG_DISC) {
            conditions->discs.push_back(readEntry(child, ATTR_FILEPATH));
        }
    }
    return conditions;
}

std::unique_ptr<Entries> readItems(const pugi::xml_node& node) {
    auto items = std::make_unique<Entries>();
    for (const pugi::xml_node& child : node.children()) {
        if (child.name() == TAG_ITEMINFO) {
            items->push_back(readEntry(child, ATTR_DISPLAYNAME));
        }
    }
    return items;
}

std::unique_ptr<UpdateInfo> loadWithPugixml(const std::string& path) {
    pugi::xml_document document;
    if (!document.load_file(path.c_str())) {
        return nullptr;
    }
    const pugi::xml_node root = document.document_element();
    auto info = std::make_unique<UpdateInfo>();
    info->xmlVersion = root.attribute("XmlVersion").value();
    for (const pugi::xml_node& child : root.children()) {
        if (child.name() == TAG_CONDITIONS) {
            info->conditions = readConditions(child);
        } else if (child.name() == TAG_TARGETITEMS) {
            info->targetItems = readItems(child);
        }
    }
    return info;
}

std::unique_ptr<CXMLElement> convert(const pugi::xml_node& node) {
    std::unique_ptr<CXMLElement> element(CXMLNode::CreateElementWithName(node.name()));
    for (const pugi::xml_node& child : node.children()) {
        if (child.type() == pugi::node_element) {
            element->AddChild(convert(child).release());
        } else if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
            element->AddChild(CXMLNode::CreateTextWithStringValue(child.value()));
        }
    }
    for (const pugi::xml_attribute& attribute : node.attributes()) {
        element->AddAttribute(
            CXMLNode::CreateAttributeWithNameWithStringValue(attribute.name(), attribute.value()));
    }
    return element;
}

std::unique_ptr<CUpdateInfoType> loadThroughOurTree(const std::string& path) {
    pugi::xml_document document;
    if (!document.load_file(path.c_str())) {
        return nullptr;
    }
    const std::unique_ptr<CXMLElement> root = convert(document.document_element());
    return std::make_unique<CUpdateInfoType>(root.get());
}

/// The target items stay allocated by design; a benchmark would fill the memory.
void deleteItems(const CUpdateInfoType& info) {
    for (const CItemInfoType* item : info.targetItems->items) {
        delete item;
    }
}

void loadDescription(benchmark::State& state) {
    const DescriptionFile file(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const std::unique_ptr<CUpdateInfoType> info(CZPKXMLLoader::LoadConditionXML(file.path()));
        if (info == nullptr) {
            state.SkipWithError("the description does not load");
            break;
        }
        deleteItems(*info);
    }
}
BENCHMARK(loadDescription)->ArgName("entries")->Arg(kSmall)->Arg(kLarge);

void loadDescriptionPugixml(benchmark::State& state) {
    const DescriptionFile file(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const std::unique_ptr<UpdateInfo> info = loadWithPugixml(file.path());
        if (info == nullptr) {
            state.SkipWithError("the description does not load");
            break;
        }
    }
}
BENCHMARK(loadDescriptionPugixml)->ArgName("entries")->Arg(kSmall)->Arg(kLarge);

void loadDescriptionPugixmlThroughOurTree(benchmark::State& state) {
    const DescriptionFile file(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const std::unique_ptr<CUpdateInfoType> info = loadThroughOurTree(file.path());
        if (info == nullptr) {
            state.SkipWithError("the description does not load");
            break;
        }
        deleteItems(*info);
    }
}
BENCHMARK(loadDescriptionPugixmlThroughOurTree)->ArgName("entries")->Arg(kSmall)->Arg(kLarge);

}  // namespace

BENCHMARK_MAIN();
