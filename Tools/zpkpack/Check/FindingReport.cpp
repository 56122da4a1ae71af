// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/FindingReport.h"

#include <nlohmann/json.hpp>
#include <string_view>

#include "Base/ZPKTerminalText.h"
#include "Tools/zpkpack/Check/CheckRules.h"

namespace zpk_packager {

namespace {

using Object = nlohmann::ordered_json;

/// ASCII alone, so that no terminal obeys anything in it.
std::string textOf(const Object& object) {
    return object.dump(2, ' ', true, Object::error_handler_t::replace) + "\n";
}

/// The path as a relative or absolute reference; every byte that has a meaning there is escaped.
std::string uriOf(const std::string& path) {
    constexpr std::string_view kHexadecimal = "0123456789ABCDEF";
    constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string uri = path.starts_with('/') ? "file://" : "";
    for (const char each : path) {
        if (kPlain.find(each) != std::string_view::npos) {
            uri += each;
            continue;
        }
        const auto byte = static_cast<unsigned char>(each);
        uri += '%';
        uri += kHexadecimal[byte >> 4];
        uri += kHexadecimal[byte & 0xF];
    }
    return uri;
}

Object ruleObject(const CheckRule& rule) {
    return {{"id", rule.name},
            {"shortDescription", {{"text", rule.reason}}},
            {"help", {{"text", rule.remedy}}},
            {"defaultConfiguration", {{"level", rule.severityName()}}}};
}

Object resultObject(const Finding& finding) {
    const Object region = {{"startLine", finding.place.line}, {"startColumn", finding.place.column}};
    const Object location = {
        {"physicalLocation", {{"artifactLocation", {{"uri", uriOf(finding.path)}}}, {"region", region}}}};
    return {{"ruleId", finding.rule->name},
            {"ruleIndex", finding.rule - CheckRules::all().data()},
            {"level", finding.rule->severityName()},
            {"message", {{"text", finding.text}}},
            {"locations", Object::array({location})}};
}

}  // namespace

std::string FindingReport::line(const Finding& finding) {
    return ZPKTerminalText::printable(finding.path) + ':' + std::to_string(finding.place.line) + ':' +
           std::to_string(finding.place.column) + ": " + finding.rule->severityName() + ": " + finding.text +
           " [" + finding.rule->name + "]";
}

std::string FindingReport::asText(const FindingList& findings) {
    std::string text;
    for (const Finding& finding : findings.findings()) {
        text += line(finding) + "\n";
    }
    return text;
}

std::string FindingReport::asJSON(const FindingList& findings) {
    Object list = Object::array();
    for (const Finding& finding : findings.findings()) {
        list.push_back({{"path", ZPKTerminalText::printable(finding.path)},
                        {"line", finding.place.line},
                        {"column", finding.place.column},
                        {"severity", finding.rule->severityName()},
                        {"text", finding.text},
                        {"check", finding.rule->name}});
    }
    return textOf({{"findings", list}, {"errors", findings.errors()}, {"warnings", findings.warnings()}});
}

std::string FindingReport::asSARIF(const FindingList& findings, const std::string& version) {
    Object rules = Object::array();
    for (const CheckRule& rule : CheckRules::all()) {
        rules.push_back(ruleObject(rule));
    }
    Object results = Object::array();
    for (const Finding& finding : findings.findings()) {
        results.push_back(resultObject(finding));
    }
    const Object driver = {{"name", "zpkpack"}, {"version", version}, {"rules", rules}};
    const Object run = {
        {"tool", {{"driver", driver}}}, {"columnKind", "unicodeCodePoints"}, {"results", results}};
    return textOf({{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
                   {"version", "2.1.0"},
                   {"runs", Object::array({run})}});
}

}  // namespace zpk_packager
