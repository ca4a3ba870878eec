#!/bin/sh
# What the bundled BMC module adds to a whole run, in two IPMI driver states,
# against the simulated management controller (fake module tools, real pauses):
#   none loaded: the collector loads all three drivers and unloads them again;
#   udev state:  ipmi_si, ipmi_msghandler and acpi_ipmi loaded, ipmi_devintf not.
# Each state runs the collector twice, with a trivial module and with bmcinv,
# and prints both wall times and the difference. Usage: bench/bmc_module_states.sh
set -eu
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja >/dev/null
cmake --build build --target sorvik bmcinv ipmisim >/dev/null
top=$PWD
work=$(mktemp -d /tmp/sorvik_bmc_bench.XXXXXX)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/root/sys/firmware/dmi/entries/38-0" "$work/bmcinv" "$work/noop"
cp build/modules/stage/bmcinv/bmcinv "$work/bmcinv/"
printf '#!/bin/sh\necho "<SVMInventory/>"\n' > "$work/noop/noop"
chmod +x "$work/noop/noop"

config() {
    printf '{"SorVikConfig": {"Generation": [{"_type": "Generic", "InvComponent": [
      {"_dir": "/%s", "_type": "cli", "__text": "%s", "_CmpType": "FRMW", "_isParallelRunSupported": "true"}]}]}}\n' \
        "$1" "$2" > "$work/icconfig_new.json"
}

seconds() {
    start=$(date +%s.%N)
    (cd "$work" && env IPMISIM_MODULES="$1" IPMISIM_GEN=0x40 \
        sh "$top/build/tests/ipmisim/ipmisim-run" "$top/build/ModularIC/Controller/sorvik" \
        -outc="$work/inv.xml" -enc=UTF-8 >/dev/null 2>&1) || true
    end=$(date +%s.%N)
    echo "$start $end" | awk '{printf "%.3f", $2 - $1}'
}

printf '%-12s %12s %12s %12s\n' state "noop (s)" "bmcinv (s)" "added (s)"
for state in none udev; do
    modules=""
    [ "$state" = udev ] && modules="ipmi_si ipmi_msghandler acpi_ipmi"
    config noop noop
    base=$(seconds "$modules")
    config bmcinv "bmcinv --root $work/root"
    with=$(seconds "$modules")
    grep -q "Management controller firmware" "$work/inv.xml" || { echo "bmcinv reported no firmware:" >&2; cat "$work"/*.xml >&2; exit 1; }
    printf '%-12s %12s %12s %12s\n' "$state" "$base" "$with" "$(echo "$base $with" | awk '{printf "%.3f", $2 - $1}')"
done
