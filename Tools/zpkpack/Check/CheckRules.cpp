// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Tools/zpkpack/Check/CheckRules.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "Base/ZPKNearestName.h"

namespace zpk_packager {

namespace {

constexpr CheckSeverity kError = CheckSeverity::Error;
constexpr CheckSeverity kWarning = CheckSeverity::Warning;

constexpr const char* kIntroduction = R"(# Checks

`zpkpack check PACKAGE` looks for what a package, a source, a bundle or one file, would suffer from on somebody
else's machine, and prints it as `path:line:column: error|warning: text [check]`. Errors also keep `zpkpack build` from making the package;
with `--strict` warnings count, too. `zpkpack check --explain CHECK` prints the two lines of a check below. In a
made package the payload stays packed; its setup program is looked at all the same, but one of more than 256 MiB or in an
application bundle is looked for alone.

`--format json` gives the findings in the form of [schemas/check.schema.json](schemas/check.schema.json), and
`--format sarif` in that of SARIF 2.1.0.

A comment in `Package.strings` silences a check for the whole package:

    # zpkpack: allow exec-outside

The texts below are those of the program; a test compares them.
)";

constexpr CheckRule kRules[] = {
    {"missing-part", kError, "Without Package.strings, Info and Data there is nothing to make a package of.",
     "Make the folder or file that is named; an empty Info folder is enough for a package without "
     "descriptions."},
    {"unreadable", kError,
     "What cannot be read now is missing in the package, or is passed over by the launcher.",
     "Give yourself the permission to read it, or put a regular file in its place."},
    {"too-large", kError, "The file is far larger than any that a person writes, so it was not looked at.",
     "See what fills it, and keep it below 1 MiB."},
    {"package-strings", kError,
     "The bundle's name and identifier come from this list; without them no package can be made.",
     "Write \"CFBundleName\" = \"NAME\"; and \"CFBundleIdentifier\" = \"ORGANIZATION.NAME\"; into "
     "Package.strings."},
    {"identifier", kError,
     "A launcher finds other runs of itself by the last part of the identifier, which has to be the name.",
     "End CFBundleIdentifier in a dot and the bundle's name, letter by letter."},
    {"package-title", kError,
     "People read CFBundleDisplayName in one line: in the windows, in the menu, and in the file manager.",
     "Write it as a text without control characters and with at most 100 characters, in Package.strings or "
     "in "
     "the InfoPlist.strings of a language; there it must not be empty."},
    {"icon", kError, "The windows show this picture, and one that cannot be read would be missing.",
     "Save Icon.png as a PNG picture, best of 256 by 256 points, or Icon.svg as a drawing with a viewBox, of "
     "plain paths, that needs no other file."},
    {"icon-too-large", kError,
     "Every window carries the picture along, and a launcher passes over one that is far too large.",
     "Make it smaller: 256 by 256 points are enough, 512 by 512 the most."},
    {"icon-small", kWarning, "A picture of less than 48 points is blurred where it is shown larger.",
     "Draw it with 256 by 256 points; it is made smaller where that is wanted."},
    {"icon-shape", kWarning,
     "Desktops show the picture in a square, and another shape leaves margins or is bent.",
     "Give the picture a square shape, with a transparent margin if need be."},
    {"icon-drawing", kWarning,
     "Clip paths, masks, filters, patterns, markers and symbols are left out when a picture is made of the "
     "drawing.",
     "Turn them into plain paths, or put the picture as it is meant, Icon.png, in the drawing's place."},
    {"icon-twice", kWarning, "Of a picture and a drawing only the picture, Icon.png, is shown.",
     "Remove one of the two."},
    {"allow-unused", kWarning, "An allowance that silences nothing hides the next finding of that check.",
     "Remove the \"# zpkpack: allow\" comment, or mend the name of the check in it."},

    {"xml-syntax", kError,
     "The launcher passes over a description that is not well-formed, and a condition counts as not met.",
     "Mend the XML at the place that is named."},
    {"xml-encoding", kError, "The launcher refuses descriptions in an encoding that it cannot read.",
     "Save the file in UTF-8 and have its first line say so, or say nothing of an encoding."},
    {"unknown-element", kWarning,
     "Elements are known by their exact names and in one place; any other is passed over.",
     "Write the name as Docs/Packages.md has it, capitals included, or remove the element."},
    {"unknown-attribute", kWarning,
     "Attributes are known by their exact names; any other is passed over, and the known one counts as "
     "missing.",
     "Write the name as Docs/Packages.md has it, capitals included, or remove the attribute."},
    {"doubled-element", kWarning,
     "Of several Conditions, and of several TargetItems, only the last one counts.",
     "Put everything into one element."},
    {"exec-missing", kError, "The program that Exec names is not in Data, so nothing would be run.",
     "Mend the path behind $Data$/, or put the program there."},
    {"exec-not-executable", kError, "A program without the permission to be executed cannot be started.",
     "Run chmod +x on the file, and see that it is a program or a script."},
    {"exec-bundle", kError,
     "Exec names an application bundle without a main program, so the launcher takes another program of "
     "Data.",
     "Put Contents/Info.plist with CFBundleExecutable and the executable Contents/Linux/NAME into it."},
    {"exec-outside", kWarning,
     "Exec names something that is not in the package; what stands there is the person's machine's.",
     "Begin Exec with $Data$/ and put the program into Data."},
    {"no-program", kError,
     "Startup.xml names no program, and Data holds no executable at its top, so nothing would be run.",
     "Name the program in Exec, or put one that may be executed at the top of Data."},
    {"param-words", kWarning, "Param is one argument, blanks included; it is never split into several.",
     "If several arguments are meant, have Exec name a script that gives them."},
    {"condition-never", kWarning,
     "A condition file that holds no condition, or only Registry ones, is never met: the package installs "
     "nowhere.",
     "Add a UIMLog, UninstallXml or Disc condition, or remove Info/Condition.xml."},
    {"display-name", kWarning,
     "The alert lists the products by these names, and an empty one is an empty line.",
     "Give each ItemInfo a DisplayName, or remove it."},
    {"disc-pattern-never", kWarning,
     "A pattern is compared with the whole path of each file of the disc, and this one fits none.",
     "Write a plain path from the top of the disc, with single slashes and without . and .. in it."},
    {"disc-pattern-root", kWarning,
     "A pattern that begins with * continues the path of the disc itself, so it fits files in every folder.",
     "Write */NAME where any folder is meant, or the path from the top of the disc."},

    {"languages", kError,
     "A language list without FallBackCode, without entries or with an entry without Code counts as missing.",
     "Write <Languages FallBackCode=\"en\"> with one <Language Code=\"...\"/> for each language."},
    {"language-without-folder", kWarning,
     "A person who prefers this language gets the texts of FallBackCode instead.",
     "Add the folder with a string table, or take the language from Languages.xml."},
    {"language-not-offered", kWarning, "A language folder that Languages.xml does not name is never chosen.",
     "Add a Language element with this code, or remove the folder."},
    {"fallback-without-folder", kWarning,
     "Where a language has no folder, FallBackCode's takes its place; without it people read bare keys.",
     "Let FallBackCode name a language that has a folder."},
    {"language-doubled", kWarning, "A code that is listed twice says nothing more than once.",
     "Remove one of the two elements."},
    {"language-never-asked", kWarning,
     "Settings ask for ll or ll_CC (de, pt_BR, zh_CN), letter by letter; another form is never asked for.",
     "Write the language in small letters, and a country in capitals after an underscore."},

    {"table-missing", kError,
     "A language without a readable string table shows the keys in place of the texts.",
     "Put a ZPKStringTable.def into the folder; Docs/Localization.md tells what it holds."},
    {"table-encoding", kError,
     "The texts of a table are taken as UTF-8 whatever they are, and others come out garbled; names in "
     "another encoding are passed over.",
     "Save the file in UTF-8."},
    {"table-syntax", kError,
     "An entry with a fault may be lost, and after a missing semicolon the next one as well; of names with a "
     "fault none counts.",
     "Write \"KEY\" = \"TEXT\"; with the escapes \\\" \\\\ \\n \\t and no others."},
    {"key-missing", kWarning,
     "A key that is in no table is shown in place of its text; the English text does not stand in.",
     "Add the entry to the table."},
    {"key-unknown", kWarning, "Nothing asks for this key.", "Mend its name, or remove the entry."},
    {"key-doubled", kWarning, "Which one of two entries of one key counts is not defined.",
     "Remove one of the two."},
    {"placeholder", kError,
     "ZPKString_UPDATE_FAILURE shows the products where its %s stands; without it they are not shown.",
     "Write %s exactly once into that text, on a line of its own."},
    {"dollar", kWarning, "Text between two dollar signs is read as the name of a variable.",
     "Write the text without a dollar sign."},
    {"button-name", kWarning, "The text that asks for the disc quotes a button that is called otherwise.",
     "Quote the text of ZPKString_DISCCHECK_START letter by letter."},

    {"special-file", kError, "Devices, sockets and FIFOs cannot be packed.",
     "Remove the item from the source; a setup program can make it."},
    {"name-too-long", kError,
     "No file system takes a name of more than 255 bytes, and extended attributes need two bytes of it.",
     "Shorten the name."},
    {"file-too-large", kError, "The archive's headers have no room for the size of a file of 8 GiB or more.",
     "Split the file, and have the setup program join the pieces."},
    {"name-case", kWarning,
     "Names that differ only in capitals are one name on file systems that do not tell them apart.",
     "Rename one of the two."},
    {"name-form", kWarning,
     "Names that are spelled alike in Unicode look the same, and are one name on some file systems.",
     "Rename one of the two, or write both in the composed form."},
    {"link-absolute", kWarning, "An absolute link leads to whatever the person's machine has at that path.",
     "Make the link relative, to an item of the package."},
    {"link-outside", kWarning,
     "A link that leads out of the folder leads nowhere once the package is unpacked.",
     "Let it lead to an item of the same folder, or put a copy in its place."},
    {"set-id", kWarning, "Set-user-ID and set-group-ID bits are dropped when the package is unpacked.",
     "Remove the bit; a setup program that runs as root can set it."},
    {"program-processor", kError, "A program for another processor than the launcher's cannot be started.",
     "Build the setup program for the processor that the package is for."},
    {"program-loader", kWarning,
     "The setup program asks for a loader or interpreter that a plain machine has not.",
     "Link the program statically or with the system's usual loader; let a script begin with #!/bin/sh."},
    {"program-library", kWarning,
     "The setup program needs a library that a plain machine has not, and that Data does not bring.",
     "Link it statically, or bring it along and let the program's run path begin with $ORIGIN."},
    {"script-without-interpreter", kError,
     "A script is started by what its first line names; without #! the system refuses it.",
     "Begin the script with #!/bin/sh or another interpreter."},

    {"bundle-part", kError, "A bundle without this part does not start, or does not install.",
     "Build the bundle anew, and copy it whole."},
    {"starter", kWarning,
     "People open the bundle by this file at its top; without it, or when it may not be executed, a file "
     "manager "
     "shows them a folder.",
     "Build the bundle anew, and copy it whole, permissions included."},
    {"archive", kError, "An archive that cannot be read to its end is unpacked in part or not at all.",
     "Build the bundle anew, and copy it whole."},
    {"manifest", kError,
     "What is not as the manifest of the bundle says was damaged or changed after the package was built.",
     "Build the bundle anew, and change nothing in it afterwards."},
};

}  // namespace

std::span<const CheckRule> CheckRules::all() {
    return kRules;
}

const CheckRule* CheckRules::find(std::string_view name) {
    const auto* const found = std::find_if(std::begin(kRules), std::end(kRules),
                                           [name](const CheckRule& rule) { return name == rule.name; });
    return found == std::end(kRules) ? nullptr : found;
}

std::string CheckRules::nearestName(std::string_view name) {
    std::vector<std::string_view> names;
    for (const CheckRule& rule : kRules) {
        names.emplace_back(rule.name);
    }
    return std::string(ZPKNearestName::among(names, name));
}

std::string CheckRules::document() {
    std::string text = kIntroduction;
    for (const CheckRule& rule : kRules) {
        text += std::string("\n## ") + rule.name + "\n\n" + rule.reason + "  \n" + rule.remedy + "\n";
    }
    return text;
}

}  // namespace zpk_packager
