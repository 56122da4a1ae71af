// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/PreviewPage.h"

#include "Base/ZPKPath.h"

namespace zpk_packager {

namespace {

std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            default:
                result += character;
        }
    }
    return result;
}

std::string figure(const std::string& picture, int scale) {
    return "<figure><img src=\"" + picture + "\" srcset=\"" + picture + " " + std::to_string(scale) +
           "x\" alt=\"\"><figcaption>" + picture + "</figcaption></figure>\n";
}

}  // namespace

std::string PreviewPage::html(const std::string& name, const std::vector<std::string>& languages,
                              const std::vector<std::string>& pictures, int scale) {
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>" +
                       escaped(name) +
                       "</title>\n<style>\n"
                       "body { font-family: sans-serif; background: #8a94a0; }\n"
                       "section { display: flex; flex-wrap: wrap; align-items: flex-start; }\n"
                       "h2 { width: 100%; }\n"
                       "</style>\n</head>\n<body>\n<h1>" +
                       escaped(name) + "</h1>\n";
    for (const std::string& language : languages) {
        page += "<section>\n<h2 id=\"" + language + "\">" + language + "</h2>\n";
        for (const std::string& picture : pictures) {
            page += ZPKPath::parent(picture) == language ? figure(picture, scale) : "";
        }
        page += "</section>\n";
    }
    return page + "</body>\n</html>\n";
}

}  // namespace zpk_packager
