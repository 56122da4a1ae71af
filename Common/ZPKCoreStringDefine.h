// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <array>

/// The keys of the texts shown to the user; each table file holds one entry a key.
namespace varno_zpk {

extern const char* const ZPKSTRING_FILE_EXTRACT;
extern const char* const ZPKSTRING_OK;
extern const char* const ZPKSTRING_ERROR;
extern const char* const ZPKSTRING_ERROR_CORRUPT;
extern const char* const ZPKSTRING_TEMPFOLDERCREATEFAILURE;
extern const char* const ZPKSTRING_ERROR_EXTRACT;
extern const char* const ZPKSTRING_ERROR_INIT;
extern const char* const ZPKSTRING_UPDATE_FAILURE;
extern const char* const ZPKSTRING_DISCCHECK_TITLE;
extern const char* const ZPKSTRING_DISCCHECK_MESSAGE;
extern const char* const ZPKSTRING_DISCCHECK_START;
extern const char* const ZPKSTRING_DISCCHECK_CANCEL;
extern const char* const ZPKSTRING_DISCCHECK_SERACHING;
extern const char* const ZPKSTRING_UPDATE_INVALID_DISC;
extern const char* const ZPKSTRING_FONTNAME_FORMAC;
extern const char* const ZPKSTRING_FONTNAME_FORWIN;
extern const char* const ZPKSTRING_FONTSIZE_FORWIN;
extern const char* const ZPKSTRING_ABOUTZEPHYRKIT;
extern const char* const ZPKSTRING_PREFERENCES;
extern const char* const ZPKSTRING_SERVICES;
extern const char* const ZPKSTRING_HIDEZEPHYRKIT;
extern const char* const ZPKSTRING_HIDEOTHERS;
extern const char* const ZPKSTRING_SHOWALL;
extern const char* const ZPKSTRING_QUITZEPHYRKIT;

/// All of them, in the order in which the tables list them.
extern const std::array<const char*, 24> ZPKSTRING_KEYS;

}  // namespace varno_zpk
