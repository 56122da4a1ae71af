# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

# What is done with the discs while a person sits at the terminal. Every function named scenario_...
# is one; it begins with an empty drive, no stick and nothing running, and is over at the first
# thing that is not as it should be.

facts_of_drive='udevadm info --query=property --name=/dev/sr0'
facts_of_stick='udevadm info --query=property --name=/dev/sda'

# --- That the machine shows what the scenarios below rely on

scenario_machine_drive() {
    guest_shows ID_CDROM=1 "$facts_of_drive"
    guest_does_not_show ID_CDROM_MEDIA=1 "$facts_of_drive"
    guest_shows 1 'cat /sys/block/sr0/removable'
    guest_does_not_show /media/cdrom "$mounted_folders"
    insert right
    guest_shows ID_CDROM_MEDIA_CD=1 "$facts_of_drive"
    guest_does_not_show ID_CDROM_MEDIA_DVD=1 "$facts_of_drive"
    guest_shows /media/cdrom "$mounted_folders"
    guest_shows /media/cdrom/Sub/Deep/Deeper/Setup.dat 'find /media/cdrom -type f'
    press_eject
    guest_does_not_show ID_CDROM_MEDIA=1 "$facts_of_drive"
    guest_does_not_show /media/cdrom "$mounted_folders"
}

scenario_machine_terminal() {
    start 'tty; echo "What is your name?"; read name; echo "$(id -u) $name"; exit 3'
    expect /dev/ttyS1
    expect 'name?'
    type_line Ada
    expect '1000 Ada'
    ends 3
}

# --- The search

scenario_right_disc() {
    insert right
    launch plain
    asked_and_search
    installs
}

scenario_folder_counts_as_file() {
    insert right
    launch folder
    asked_and_search
    installs
}

# The star may stand for nothing, and no separator is put in front of it.
scenario_star_first_for_a_file_at_the_top() {
    insert right
    launch star-first-top
    asked_and_search
    installs
}

scenario_question_mark() {
    insert right
    launch question-mark
    asked_and_search
    installs
}

scenario_second_path_of_two() {
    insert right
    launch two-paths
    asked_and_search
    installs
}

scenario_no_match_on_right_disc() {
    insert right
    launch absent
    asked_and_search
    refused_then_cancel
}

scenario_last_of_a_thousand_files() {
    insert many
    launch last
    asked_and_search
    installs
}

scenario_cancel_without_search() {
    insert right
    launch plain
    expect "$question"
    type_line "$cancel_answer"
    does_not_install
}

scenario_wrong_disc_exchanged_for_right_one() {
    insert wrong
    launch star-first
    asked_and_search
    expect_line "$refusal"
    press_eject
    insert right
    asked_and_search
    installs
}

scenario_no_disc_then_the_right_one() {
    launch plain
    asked_and_search
    expect_line "$refusal"
    insert right
    asked_and_search
    installs
}

scenario_right_disc_exchanged_for_wrong_one_before_the_search() {
    insert right
    launch plain
    expect "$question"
    press_eject
    insert wrong
    type_line "$search_answer"
    refused_then_cancel
}

# The stick has a file system of its own, and the same files as the right disc.
scenario_stick_is_no_disc_and_does_not_hide_one() {
    plug stick.ext4
    guest_shows 1 'cat /sys/block/sda/removable'
    guest_shows ID_BUS=usb "$facts_of_stick"
    guest_shows /media/usb/Setup.app/Contents/Info.plist 'find /media/usb -type f'
    launch plain
    asked_and_search
    expect_line "$refusal"
    insert right
    asked_and_search
    installs
}

scenario_stick_with_the_image_of_the_right_disc_is_no_disc() {
    plug stick-with-image.iso
    guest_shows ID_FS_TYPE=iso9660 "$facts_of_stick"
    launch star-first
    asked_and_search
    refused_then_cancel
}

# It holds what the right disc holds.
scenario_dvd_is_no_cd() {
    insert dvd
    guest_shows ID_CDROM_MEDIA_DVD=1 "$facts_of_drive"
    guest_does_not_show ID_CDROM_MEDIA_CD=1 "$facts_of_drive"
    guest_shows /media/cdrom/Setup.app/Contents/Info.plist 'find /media/cdrom -type f'
    launch plain
    asked_and_search
    refused_then_cancel
}

# The drive takes ten seconds for the thousand files, and the disc goes when the search has begun.
scenario_disc_taken_during_the_search() {
    local reads
    insert many
    launch last
    expect "$question"
    limit_drive 20
    reads=$(disc_reads)
    type_line "$search_answer"
    expect_line "$searching"
    wait_for_reads $((reads + 10))
    expect_not_yet "$refusal"
    pull_disc
    refused_then_cancel
}

# --- What the scenarios have in common

mounted_folders="cut -d ' ' -f 2 /proc/mounts"

# launch NAME: starts the launcher of that bundle.
launch() {
    guest 'rm -f /tmp/setup-ran' > /dev/null
    start "exec env LANG=en_US.UTF-8 TERM=dumb /payload/$1.app/Contents/Linux/Zephyrkit"
    expect_line "$request"
    expect_line "  $product"
}

asked_and_search() {
    expect "$question"
    type_line "$search_answer"
    expect_line "$searching"
}

refused_then_cancel() {
    expect_line "$refusal"
    expect "$question"
    type_line "$cancel_answer"
    does_not_install
}

installs() {
    ends 0
    guest_shows --from-disc 'cat /tmp/setup-ran'
    nothing_is_left
}

does_not_install() {
    ends 0
    ! guest 'test -e /tmp/setup-ran' || fail 'the setup program ran'
    nothing_is_left
}

nothing_is_left() {
    local left
    left=$(guest 'find /tmp /home -name VarnoZPK_TEMP')
    [ -z "$left" ] || fail "the staging folder is left: $left"
}
