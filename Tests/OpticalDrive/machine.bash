# SPDX-FileCopyrightText: 2026 The Zephyrkit authors
# SPDX-License-Identifier: MIT

# The test machine as a scenario sees it: its drive, its sticks, its terminal, and a way to run
# commands in it. A verb that does not come about ends the scenario with a line that says why.
# To be sourced; `set -u` and a folder $work are expected.

machine_seconds=${ZPK_MACHINE_SECONDS:-300}
patience_seconds=${ZPK_MACHINE_PATIENCE:-30}

force_open='{"execute": "blockdev-open-tray", "arguments": {"id": "drive", "force": true}}'

# start_machine MACHINE DISCS: both are folders.
start_machine() {
    local machine discs
    machine=$(realpath "$1")
    discs=$(realpath "$2")
    if has_accelerator; then
        launch_machine "$machine" "$discs" kvm
        if comes_up; then
            wait_until_ready
            return
        fi
        echo 'The accelerator does not run the machine; going on without it.'
        stop_machine
    fi
    launch_machine "$machine" "$discs" tcg
    wait_until_ready
}

# A device file is not enough: inside a virtual machine there can be one that runs nothing.
has_accelerator() {
    [ -r /dev/kvm ] && [ -w /dev/kvm ] && grep -qE '^flags.* (vmx|svm)( |$)' /proc/cpuinfo
}

# The kernel's first words take a second on a processor that runs it directly.
comes_up() {
    for _ in {1..100}; do
        [ ! -s "$work/boot.log" ] || return 0
        kill -0 "$machine_id" 2> /dev/null || return 1
        sleep 0.1
    done
    return 1
}

# launch_machine MACHINE DISCS ACCELERATOR
launch_machine() {
    local line
    rm -f "$work"/*.{in,out,log}
    for line in monitor terminal orders; do
        mkfifo "$work/$line.in" "$work/$line.out"
    done
    mkfifo "$work/never.in"
    exec {never}<> "$work/never.in"
    # The machine finds its end of every line open, and so does not wait for somebody to come.
    exec {monitor_in}<> "$work/monitor.in" {monitor_out}<> "$work/monitor.out"
    exec {terminal_in}<> "$work/terminal.in" {orders_in}<> "$work/orders.in"
    cat < "$work/terminal.out" > "$work/terminal.log" &
    machine_processes=$!
    cat < "$work/orders.out" > "$work/orders.log" &
    machine_processes+=" $!"

    # Its working folder is that of the discs, so that no name of theirs needs quoting.
    (cd "$2" && exec timeout "$machine_seconds" qemu-system-x86_64 \
        -machine "q35,accel=$3" -cpu max -m 512 -nodefaults \
        -no-user-config -display none -no-reboot \
        -kernel "$1/vmlinuz" -initrd "$1/machine.cpio" \
        -append 'console=ttyS0 loglevel=4 panic=-1' \
        -serial "file:$work/boot.log" \
        -chardev "pipe,id=terminal,path=$work/terminal" -serial chardev:terminal \
        -chardev "pipe,id=orders,path=$work/orders" -serial chardev:orders \
        -chardev "pipe,id=monitor,path=$work/monitor" -mon chardev=monitor,mode=control \
        -device ide-cd,id=drive,bus=ide.0 -device qemu-xhci,id=usb \
        > "$work/machine.log" 2>&1) &
    machine_id=$!
    machine_processes+=" $machine_id"
}

wait_until_ready() {
    monitor '{"execute": "qmp_capabilities"}'
    patience_seconds=90 wait_for orders 0 $'ready\n'
}

stop_machine() {
    [ -n "${machine_processes-}" ] || return 0
    # shellcheck disable=SC2086 # numbers, one a word
    kill $machine_processes 2> /dev/null || true
    # shellcheck disable=SC2086
    wait $machine_processes 2> /dev/null || true
    machine_processes=
}

fail() {
    echo "    $1" >&2
    exit 1
}

# --- Discs and sticks

# Puts the disc in and closes the drive; back when the disc is mounted.
insert() {
    local mark
    mark=$(mark_of orders)
    monitor '{"execute": "blockdev-change-medium", "arguments": {"id": "drive",
        "filename": "'"$1.iso"'", "format": "raw", "read-only-mode": "read-only"}}'
    # The limit of an earlier disc has stayed, and cannot be lifted without one.
    limit_drive 0
    wait_for orders "$mark" $'mounted sr0 '
}

# Presses the button of the drive. The system lets go of the disc and opens the drive itself.
press_eject() {
    local mark
    mark=$(mark_of orders)
    try_monitor '{"execute": "eject", "arguments": {"id": "drive"}}' || true
    wait_for orders "$mark" $'unmounted sr0\n'
}

# Takes the disc without asking the system, as with a pin in the drive's emergency hole, and closes
# the drive: one that stands open tells the system nothing here, unlike a real one.
pull_disc() {
    local mark
    mark=$(mark_of orders)
    monitor "$force_open"
    monitor '{"execute": "blockdev-remove-medium", "arguments": {"id": "drive"}}'
    monitor '{"execute": "blockdev-close-tray", "arguments": {"id": "drive"}}'
    wait_for orders "$mark" $'unmounted sr0\n'
}

# The drive reads at most so many times a second; 0 is as fast as it can.
limit_drive() {
    monitor '{"execute": "block_set_io_throttle", "arguments": {"id": "drive", "bps": 0,
        "bps_rd": 0, "bps_wr": 0, "iops": '"$1"', "iops_rd": 0, "iops_wr": 0}}'
}

# How often the disc in the drive has been read.
disc_reads() {
    monitor '{"execute": "query-blockstats"}'
    grep -o '"rd_operations": [0-9]*' <<< "$answer" | cut -d ' ' -f 2 | sort -n | tail -n 1
}

# wait_for_reads COUNT: waits until the disc has been read that often.
wait_for_reads() {
    local end=$((SECONDS + patience_seconds))
    while [ "$(disc_reads)" -lt "$1" ]; do
        [ $SECONDS -lt $end ] || fail "nothing reads the disc"
        take_a_moment
    done
}

# Plugs in a stick with this image; back when it is mounted.
plug() {
    local mark
    mark=$(mark_of orders)
    monitor '{"execute": "human-monitor-command", "arguments": {"command-line":
        "drive_add 0 if=none,id=stick,format=raw,readonly=on,file='"$1"'"}}'
    monitor '{"execute": "device_add", "arguments": {"driver": "usb-storage", "id": "stick",
        "drive": "stick", "removable": true}}'
    wait_for orders "$mark" $'mounted sda '
}

unplug() {
    local mark
    mark=$(mark_of orders)
    monitor '{"execute": "device_del", "arguments": {"id": "stick"}}'
    wait_for orders "$mark" $'unmounted sda\n'
}

# --- The person at the terminal

# Starts a command as an ordinary person.
start() {
    terminal_mark=$(mark_of terminal)
    program_mark=$(mark_of orders)
    echo "run $1" >&"$orders_in"
}

# Waits until the terminal shows the text, after what was waited for last.
expect() {
    wait_for terminal "$terminal_mark" "$1"
    terminal_mark=$found_mark
}

# The same for a whole line. Diagnostics repeat the texts, and do not count.
expect_line() {
    expect $'\n'"$1"$'\r'
}

# The text must not have been shown since what was waited for last.
expect_not_yet() {
    local shown
    shown=$(tail -c "+$((terminal_mark + 1))" "$work/terminal.log")
    [[ $shown != *"$1"* ]] || fail "\"$1\" is on the terminal too early"
}

type_line() {
    echo "$1" >&"$terminal_in"
}

program_has_ended() {
    tail -c "+$((program_mark + 1))" "$work/orders.log" | grep -q '^ended '
}

# Waits until the program has ended with that status.
ends() {
    wait_for orders "$program_mark" $'ended '"$1"$'\n'
}

# --- The machine itself

# Runs a command as root and prints its output; fails when the command does.
guest() {
    local mark
    mark=$(mark_of orders)
    # The mark is new with each order, and so tells the end of this one.
    echo "do $mark ${1//$'\n'/ }" >&"$orders_in"
    wait_for orders "$mark" "done $mark "
    tail -c "+$((mark + 1))" "$work/orders.log" | sed -n 's/^|//p'
    tail -c "+$((mark + 1))" "$work/orders.log" | grep -x "done $mark 0" > /dev/null
}

# guest_shows TEXT COMMAND: the command's output must hold the text as a line of its own.
guest_shows() {
    local output
    output=$(guest "$2") || true
    grep -qxF -- "$1" <<< "$output" || fail "no line \"$1\" in the output of \"$2\":
$output"
}

guest_does_not_show() {
    local output
    output=$(guest "$2") || true
    ! grep -qxF -- "$1" <<< "$output" || fail "a line \"$1\" in the output of \"$2\""
}

# Nothing runs, nothing is plugged in, the drive is empty.
reset_machine() {
    local mounted
    echo stop >&"$orders_in"
    mounted=$(guest 'cat /proc/mounts') || fail 'the machine does not answer'
    if [[ $mounted == */media/usb* ]]; then
        unplug
    fi
    if [[ $mounted == */media/cdrom* ]]; then
        press_eject
    fi
}

# --- Below the verbs

# Sends a command to the machine's monitor and sets answer; fails when that is an error.
try_monitor() {
    echo "${1//$'\n'/ }" >&"$monitor_in"
    while read -r -t "$patience_seconds" -u "$monitor_out" answer; do
        case $answer in
            '{"return"'*) return 0 ;;
            '{"error"'*) return 1 ;;
        esac
    done
    fail 'the monitor does not answer'
}

monitor() {
    try_monitor "$1" || fail "the monitor refuses $1: $answer"
}

# How much has come over the line so far.
mark_of() {
    stat -c %s "$work/$1.log"
}

# wait_for LINE MARK TEXT: waits until the text has come over the line after the mark, and sets
# found_mark to the place behind it.
wait_for() {
    local LC_ALL=C end=$((SECONDS + patience_seconds)) wanted=${3//[$'\r\n']/} came before
    while true; do
        IFS= read -r -d '' came < "$work/$1.log" || true
        came=${came:$2}
        if [[ $came == *"$3"* ]]; then
            before=${came%%"$3"*}
            found_mark=$(($2 + ${#before} + ${#3}))
            return
        fi
        kill -0 "$machine_id" 2> /dev/null || fail "the machine is gone; waited for \"$wanted\""
        [ $SECONDS -lt $end ] || fail "\"$wanted\" did not come"
        if [ "$1" = terminal ] && program_has_ended; then
            # What it wrote at its end may be a little behind on the other line.
            end=$((end < SECONDS + 2 ? end : SECONDS + 2))
        fi
        take_a_moment
    done
}

# Nothing ever comes on this line: a short sleep that starts no program.
take_a_moment() {
    read -r -t 0.05 -u "$never" || true
}
