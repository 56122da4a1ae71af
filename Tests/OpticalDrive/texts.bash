# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

# What the launcher shows on the terminal in English, and what a person types there; each script uses a
# part of it.
# shellcheck disable=SC2034

product='Tandemset Deluxe'
# The first line of it: the serial line tells no width, and counts as 80 columns wide.
request='Insert the installation disc of one of the following products, then choose'
question='[1]: '
search_answer=1
cancel_answer=2
searching='Searching the disc…'
refusal='The required installation disc was not found.'
