// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#include "Common/ZPKCoreStringDefine.h"

namespace varno_zpk {

const char* const ZPKSTRING_FILE_EXTRACT = "ZPKString_FILE_EXTRACT";
const char* const ZPKSTRING_OK = "ZPKString_OK";
const char* const ZPKSTRING_ERROR = "ZPKString_Error";
const char* const ZPKSTRING_ERROR_CORRUPT = "ZPKString_ERROR_CORRUPT";
const char* const ZPKSTRING_TEMPFOLDERCREATEFAILURE = "ZPKString_TEMPFOLDERCREATEFAILURE";
const char* const ZPKSTRING_ERROR_EXTRACT = "ZPKString_ERROR_EXTRACT";
const char* const ZPKSTRING_ERROR_INIT = "ZPKString_ERROR_INIT";
const char* const ZPKSTRING_UPDATE_FAILURE = "ZPKString_UPDATE_FAILURE";
const char* const ZPKSTRING_DISCCHECK_TITLE = "ZPKString_DISCCHECK_TITLE";
const char* const ZPKSTRING_DISCCHECK_MESSAGE = "ZPKString_DISCCHECK_MESSAGE";
const char* const ZPKSTRING_DISCCHECK_START = "ZPKString_DISCCHECK_START";
const char* const ZPKSTRING_DISCCHECK_CANCEL = "ZPKString_DISCCHECK_CANCEL";
const char* const ZPKSTRING_DISCCHECK_SERACHING = "ZPKString_DISCCHECK_SERACHING";
const char* const ZPKSTRING_UPDATE_INVALID_DISC = "ZPKString_UPDATE_INVALID_DISC";
const char* const ZPKSTRING_FONTNAME_FORMAC = "ZPKString_FontName_ForMac";
const char* const ZPKSTRING_FONTNAME_FORWIN = "ZPKString_FontName_ForWin";
const char* const ZPKSTRING_FONTSIZE_FORWIN = "ZPKString_FontSize_ForWin";
const char* const ZPKSTRING_ABOUTZEPHYRKIT = "ZPKString_AboutZephyrkit";
const char* const ZPKSTRING_PREFERENCES = "ZPKString_Preferences";
const char* const ZPKSTRING_SERVICES = "ZPKString_Services";
const char* const ZPKSTRING_HIDEZEPHYRKIT = "ZPKString_HideZephyrkit";
const char* const ZPKSTRING_HIDEOTHERS = "ZPKString_HideOthers";
const char* const ZPKSTRING_SHOWALL = "ZPKString_ShowAll";
const char* const ZPKSTRING_QUITZEPHYRKIT = "ZPKString_QuitZephyrkit";

const std::array<const char*, 24> ZPKSTRING_KEYS = {ZPKSTRING_FILE_EXTRACT,
                                                    ZPKSTRING_OK,
                                                    ZPKSTRING_ERROR,
                                                    ZPKSTRING_ERROR_CORRUPT,
                                                    ZPKSTRING_TEMPFOLDERCREATEFAILURE,
                                                    ZPKSTRING_ERROR_EXTRACT,
                                                    ZPKSTRING_ERROR_INIT,
                                                    ZPKSTRING_UPDATE_FAILURE,
                                                    ZPKSTRING_DISCCHECK_TITLE,
                                                    ZPKSTRING_DISCCHECK_MESSAGE,
                                                    ZPKSTRING_DISCCHECK_START,
                                                    ZPKSTRING_DISCCHECK_CANCEL,
                                                    ZPKSTRING_DISCCHECK_SERACHING,
                                                    ZPKSTRING_UPDATE_INVALID_DISC,
                                                    ZPKSTRING_FONTNAME_FORMAC,
                                                    ZPKSTRING_FONTNAME_FORWIN,
                                                    ZPKSTRING_FONTSIZE_FORWIN,
                                                    ZPKSTRING_ABOUTZEPHYRKIT,
                                                    ZPKSTRING_PREFERENCES,
                                                    ZPKSTRING_SERVICES,
                                                    ZPKSTRING_HIDEZEPHYRKIT,
                                                    ZPKSTRING_HIDEOTHERS,
                                                    ZPKSTRING_SHOWALL,
                                                    ZPKSTRING_QUITZEPHYRKIT};

}  // namespace varno_zpk
