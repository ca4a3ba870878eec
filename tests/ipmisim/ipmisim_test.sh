#!/bin/sh
# Integration cases of the generation detection against the simulated
# management controller. Usage: ipmisim_test.sh <ipmisim-run> <sysgen_probe> <case>
set -u
RUN=$1
PROBE=$2
CASE=$3

WORK=$(mktemp -d /tmp/ipmisim_test.XXXXXX) || exit 1
trap 'rm -rf "$WORK"' EXIT
cd "$WORK" || exit 1
export IPMISIM_LOG="$WORK/sim.log"
: > "$IPMISIM_LOG"

failures=0
fail() {
    echo "FAIL: $*"
    failures=$((failures + 1))
}

# Runs the probe with the given extra environment; names to names.txt.
probe() {
    env "$@" sh "$RUN" "$PROBE" > names.txt 2> stderr.txt
    status=$?
    [ "$status" -eq 0 ] || fail "probe exited with $status"
}

expect_names() {
    printf '%s\n' "$@" | sort > expected.txt
    sort names.txt > actual.txt
    if ! cmp -s expected.txt actual.txt; then
        fail "names differ"
        echo "expected:"; cat expected.txt
        echo "actual:"; cat actual.txt
    fi
}

expect_log() {
    grep -q -- "$1" "$IPMISIM_LOG" || fail "log lacks: $1"
}

expect_no_log() {
    if grep -q -- "$1" "$IPMISIM_LOG"; then fail "log has: $1"; fi
}

ALL="GenPre12G GenTwelveG GenThirteenG GenFourteenG GenFifteenG GenSixteenG"

case "$CASE" in
generation_0x30)
    probe IPMISIM_GEN=0x30
    expect_names GenPre12G GenTwelveG GenThirteenG GenFourteenG
    if grep -qx GenFifteenG names.txt; then fail "GenFifteenG selected"; fi
    ;;
generation_0x52)
    probe IPMISIM_GEN=0x52
    expect_names $ALL
    ;;
completion_code_0xC1)
    probe IPMISIM_CC=0xC1 IPMISIM_GEN=0x52
    expect_names GenPre12G
    [ "$(grep -c '^send ' "$IPMISIM_LOG")" -eq 1 ] || fail "0xC1 was retried"
    ;;
completion_code_0xC0_retried)
    probe IPMISIM_CC=0xC0
    expect_names GenPre12G
    [ "$(grep -c '^send ' "$IPMISIM_LOG")" -eq 5 ] || fail "0xC0 not sent five times"
    ;;
request_bytes)
    probe IPMISIM_GEN=0x30
    expect_log '^open /dev/ipmi0 rdwr=1 cloexec=1$'
    expect_log '^send netfn=0x30 cmd=0xbd data_len=0 data= msgid=[0-9]* addr_type=0x0c channel=0x0f lun=0 addr_len=8$'
    expect_log '^recv msgid='
    expect_log '^close$'
    [ "$(grep -c '^shell lsmod' "$IPMISIM_LOG")" -eq 3 ] || fail "three module checks expected"
    expect_no_log '^shell modprobe'
    expect_no_log '^shell rmmod'
    [ -s stderr.txt ] && fail "unexpected stderr: $(cat stderr.txt)"
    ;;
drivers_loaded_and_unloaded)
    probe IPMISIM_MODULES= IPMISIM_GEN=0x40
    expect_names GenPre12G GenTwelveG GenThirteenG GenFourteenG GenFifteenG
    expect_log '^shell modprobe ipmi_msghandler$'
    expect_log '^shell modprobe ipmi_devintf$'
    expect_log '^shell modprobe ipmi_si$'
    sed -n 's/^shell rmmod //p' "$IPMISIM_LOG" > unloaded.txt
    printf 'ipmi_si\nipmi_devintf\nipmi_msghandler\n' | cmp -s - unloaded.txt || fail "unload order: $(cat unloaded.txt)"
    ;;
no_drivers)
    start=$(date +%s)
    probe IPMISIM_MODULES= IPMISIM_MODPROBE_STATUS=1
    elapsed=$(( $(date +%s) - start ))
    expect_names $ALL
    expect_no_log '^open '
    expect_no_log '^shell rmmod'
    [ "$elapsed" -le 2 ] || fail "detection took ${elapsed}s"
    ;;
device_absent)
    probe IPMISIM_ABSENT=1
    expect_names $ALL
    grep -qx "Can't open IPMI device" stderr.txt || fail "stderr: $(cat stderr.txt)"
    [ "$(grep -c '^open /dev/ipmi0 absent' "$IPMISIM_LOG")" -eq 5 ] || fail "five passes expected"
    ;;
send_fails)
    probe IPMISIM_SEND_FAIL=1
    expect_names $ALL
    expect_log '^close$'
    ;;
marker_file)
    : > kpxdebuglog
    probe IPMISIM_GEN=0x30
    expect_names GenPre12G GenTwelveG GenThirteenG GenFourteenG
    [ -f bqmipmi.log ] || fail "no bqmipmi.log"
    grep -Eq '^BQMIPMILibrary INFO  : .+ [0-9]{2}:[0-9]{2}[AP]M Initialize {30}\(\) [^ ]*BQMIPMIInterfaceImpl\.cpp *: *[0-9]+ Started Logging for BQMIPMI Library$' \
        bqmipmi_internal.log || fail "internal log line format: $(head -3 bqmipmi_internal.log)"
    grep -q '^IPMI Request :  0x30 0xbd      IPMI Response :   0x31 0xbd 0x00 0x00 0x00 0x00 0x00 0x00 0x30$' \
        bqmipmi_internal.log || fail "no request dump"
    ;;
no_marker_file)
    probe IPMISIM_GEN=0x30
    [ -e bqmipmi_internal.log ] && fail "bqmipmi_internal.log written"
    [ -e bqmipmi.log ] && fail "bqmipmi.log written"
    ;;
*)
    echo "unknown case $CASE"
    exit 2
    ;;
esac

if [ "$failures" -ne 0 ]; then
    echo "--- simulator log"; cat "$IPMISIM_LOG"
    echo "--- stderr"; cat stderr.txt
    exit 1
fi
echo "PASS: $CASE"
