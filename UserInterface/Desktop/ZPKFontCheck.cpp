// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "UserInterface/Desktop/ZPKFontCheck.h"

#include <QAbstractButton>
#include <QFontMetrics>
#include <QLabel>
#include <QPlainTextEdit>
#include <bitset>
#include <cstdio>

namespace {

struct ScriptName {
    QChar::Script script;
    const char* name;
};

/// The scripts of languages in which people are likely to be spoken to.
constexpr ScriptName kNames[] = {
    {QChar::Script_Latin, "Latin"},
    {QChar::Script_Greek, "Greek"},
    {QChar::Script_Cyrillic, "Cyrillic"},
    {QChar::Script_Armenian, "Armenian"},
    {QChar::Script_Hebrew, "Hebrew"},
    {QChar::Script_Arabic, "Arabic"},
    {QChar::Script_Devanagari, "Devanagari"},
    {QChar::Script_Bengali, "Bengali"},
    {QChar::Script_Gurmukhi, "Gurmukhi"},
    {QChar::Script_Gujarati, "Gujarati"},
    {QChar::Script_Tamil, "Tamil"},
    {QChar::Script_Telugu, "Telugu"},
    {QChar::Script_Kannada, "Kannada"},
    {QChar::Script_Malayalam, "Malayalam"},
    {QChar::Script_Sinhala, "Sinhala"},
    {QChar::Script_Thai, "Thai"},
    {QChar::Script_Lao, "Lao"},
    {QChar::Script_Myanmar, "Myanmar"},
    {QChar::Script_Georgian, "Georgian"},
    {QChar::Script_Hangul, "Hangul"},
    {QChar::Script_Ethiopic, "Ethiopic"},
    {QChar::Script_Khmer, "Khmer"},
    {QChar::Script_Hiragana, "Hiragana"},
    {QChar::Script_Katakana, "Katakana"},
    {QChar::Script_Bopomofo, "Bopomofo"},
    {QChar::Script_Han, "Han"},
    {QChar::Script_Tibetan, "Tibetan"},
    {QChar::Script_Mongolian, "Mongolian"},
};

void tell(QChar::Script script, uint character) {
    for (const ScriptName& known : kNames) {
        if (known.script == script) {
            std::fprintf(stderr, "No font has U+%04X of the %s script: boxes stand for such letters\n",
                         character, known.name);
            return;
        }
    }
    std::fprintf(stderr, "No font has U+%04X: boxes stand for such letters\n", character);
}

/// Signs and digits that all scripts share are in no script's font, or in every one's.
bool isOfOneScript(QChar::Script script) {
    return script != QChar::Script_Unknown && script != QChar::Script_Inherited &&
           script != QChar::Script_Common;
}

void check(const QString& text, const QFont& font) {
    static std::bitset<QChar::ScriptCount> told;
    const QFontMetrics metrics(font);
    for (const uint character : text.toUcs4()) {
        const QChar::Script script = QChar::script(character);
        if (isOfOneScript(script) && !told.test(script) && !metrics.inFontUcs4(character)) {
            told.set(script);
            tell(script, character);
        }
    }
}

}  // namespace

void ZPKFontCheck::check(const QWidget& window) {
    for (const QLabel* label : window.findChildren<QLabel*>()) {
        ::check(label->text(), label->font());
    }
    for (const QAbstractButton* button : window.findChildren<QAbstractButton*>()) {
        ::check(button->text(), button->font());
    }
    for (const QPlainTextEdit* view : window.findChildren<QPlainTextEdit*>()) {
        ::check(view->toPlainText(), view->font());
    }
}
