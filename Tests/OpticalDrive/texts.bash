# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

# What the launcher shows on the terminal in English, and what a person types there; each script uses a
# part of it.
# shellcheck disable=SC2034

product='Tandemset Deluxe'
request='Insert the installation disc of one of the following products, then choose “Search”.'
question='[1] Search  [2] Cancel: '
search_answer=1
cancel_answer=2
searching='Searching the disc…'
refusal='The required installation disc was not found.'
