// SPDX-FileCopyrightText: 2026 The Zephyrkit authors
// SPDX-License-Identifier: MIT

#pragma once

#include <assert.h>

/// The standard assertion for the few places whose report must name a line and a text that stay the
/// same however the source around them moves: `text` is the expression as the report shows it.
#define ZPK_ASSERT_ON_LINE(expression, line, text)        \
    (static_cast<bool>(expression) ? static_cast<void>(0) \
                                   : __assert_fail(text, __FILE__, line, __extension__ __PRETTY_FUNCTION__))
