# The test machine as a scenario sees it: its drive, its sticks, its terminal, and a way to run
# commands in it. A verb that does not come about ends the scenario with a line that says why.
# To be sourced; `set -u` and a folder $work are expected.

machine_seconds=${ZPK_MACHINE_SECONDS:-170}
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
    local tries
    for tries in {1..100}; do
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
    wait_for orders 0 $'ready\n'
}

stop_machine() {
    [ -n "${machine_processes-}" ] || return 0
    kill $machine_processes 2> /dev/null || true
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
    wait_for orders "$mark" $'mounted sr0 '
}

# Presses the button of the drive. The system lets go of the disc and opens the drive itself.
press_eject() {
    local mark
    mark=$(mark_of orders)
    try_monitor '{"execute": "eject", "arguments": {"id": "drive"}}' > /dev/null || true
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
    echo "run $1" >&$orders_in
}

# Waits until the terminal shows the text, after what was waited for last.
expect() {
    wait_for terminal "$terminal_mark" "$1"
    terminal_mark=$found_mark
}

# The text must not have been shown since what was waited for last.
expect_not_yet() {
    local shown
    shown=$(tail -c "+$((terminal_mark + 1))" "$work/terminal.log")
    [[ $shown != *"$1"* ]] || fail "\"$1\" is on the terminal too early"
}

type_line() {
    echo "$1" >&$terminal_in
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
    echo "do $mark ${1//$'\n'/ }" >&$orders_in
    wait_for orders "$mark" "done $mark "
    tail -c "+$((mark + 1))" "$work/orders.log" | sed -n 's/^|//p'
    tail -c "+$((mark + 1))" "$work/orders.log" | grep -qx "done $mark 0"
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

# Nothing runs, nothing is plugged in, the drive is empty and fast.
reset_machine() {
    echo stop >&$orders_in
    try_monitor '{"execute": "device_del", "arguments": {"id": "stick"}}' > /dev/null || true
    try_monitor "$force_open" > /dev/null || true
    try_monitor '{"execute": "blockdev-remove-medium", "arguments": {"id": "drive"}}' > /dev/null ||
        true
    monitor '{"execute": "blockdev-close-tray", "arguments": {"id": "drive"}}'
    guest 'n=0;
        while grep -q "^/dev/s[rd]" /proc/mounts || [ -e /sys/block/sda ]; do
            [ $((n += 1)) -lt 100 ] || exit 1;
            sleep 0.1;
        done' > /dev/null || fail 'the machine does not get rid of its discs'
}

# --- Below the verbs

# Sends a command to the machine's monitor and prints the answer; fails when that is an error.
try_monitor() {
    local answer
    echo "$1" | tr '\n' ' ' >&$monitor_in
    while read -r -t "$patience_seconds" -u $monitor_out answer; do
        case $answer in
            '{"return"'*) echo "$answer"; return 0 ;;
            '{"error"'*) echo "$answer"; return 1 ;;
        esac
    done
    fail 'the monitor does not answer'
}

monitor() {
    local answer
    answer=$(try_monitor "$1") || fail "the monitor refuses $1: $answer"
}

# How much has come over the line so far.
mark_of() {
    stat -c %s "$work/$1.log"
}

# wait_for LINE MARK TEXT: waits until the text has come over the line after the mark, and sets
# found_mark to the place behind it.
wait_for() {
    local LC_ALL=C end=$((SECONDS + patience_seconds)) came before
    while true; do
        came=$(tail -c "+$(($2 + 1))" "$work/$1.log"; echo .)
        if [[ $came == *"$3"* ]]; then
            before=${came%%"$3"*}
            found_mark=$(($2 + ${#before} + ${#3}))
            return
        fi
        kill -0 "$machine_id" 2> /dev/null || fail "the machine is gone; waited for \"$3\""
        [ $SECONDS -lt $end ] || fail "\"$3\" did not come within $patience_seconds seconds"
        sleep 0.05
    done
}
