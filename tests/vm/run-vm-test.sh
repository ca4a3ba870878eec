#!/bin/sh
# The collector on a real Linux kernel: boots the Debian kernel under QEMU with
# a simulated management controller (KCS), SMBIOS strings, an NVMe disk, an
# e1000e NIC, a software TPM 2.0 on the TIS interface and two SAS controllers
# with a disk each (MegaRAID, whose disk is a logical volume, and Fusion MPT
# SAS), runs the collector in
# each IPMI module state and checks what it reports and leaves behind against
# what the guest itself shows.
# Usage: run-vm-test.sh BUILD_DIR KERNEL_TREE
set -eu
build=$1 tree=$2
here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/../.." && pwd)
work=$(mktemp -d /tmp/sorvik-vm.XXXXXX)
swtpm_pid=""
cleanup() {
    # The emulator has usually ended with QEMU already.
    if [ -n "$swtpm_pid" ]; then kill "$swtpm_pid" 2>/dev/null || true; fi
    rm -rf "$work"
}
trap cleanup EXIT

cmake -S "$top" -B "$build" -G Ninja -DSORVIK_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" --target sorvik sorvik_modules sorvik-audit >/dev/null
cmake --install "$build" --prefix "$work/stage" >/dev/null
sh "$here/build-initramfs.sh" "$tree" "$work/stage" "$work/initrd.gz" 2>/dev/null
truncate -s 64M "$work/nvme.img" "$work/megaraid.img" "$work/mptsas.img"
kernel=$(ls "$tree"/boot/vmlinuz-*)

# The MMU of /dev/kvm on these machines is the shadow-paging kind, under which
# this guest does not finish booting in minutes; TCG takes seconds. KVM only on
# request.
accel=${SORVIK_VM_ACCEL:-tcg}

boot() {  # console-file states [qemu options...]
    console=$1 states=$2
    shift 2
    timeout 600 qemu-system-x86_64 -machine q35 -accel "$accel" -m 1024 -smp 1 -nographic -no-reboot \
        -kernel "$kernel" -initrd "$work/initrd.gz" \
        -append "console=ttyS0 quiet panic=-1 sorvik_states=$states" \
        -smbios type=0,vendor=SorvikTest,version=2.19.7,date=11/24/2026 \
        -smbios type=1,manufacturer=SorvikTest,product=TestServer,serial=SN123 \
        -drive "file=$work/nvme.img,if=none,id=nv0,format=raw" -device nvme,serial=SORVIK01,drive=nv0 \
        -netdev user,id=n0 -device e1000e,netdev=n0 "$@" </dev/null >"$console" 2>&1 || true
    grep -aq '^@@DONE' "$console" || { echo "FAIL: the guest did not finish ($console):"; tail -20 "$console"; exit 1; }
}

# The TPM for the first boot: QEMU drives it over the control socket and the
# emulator ends when QEMU closes that socket.
mkdir "$work/tpm"
swtpm socket --tpm2 --tpmstate dir="$work/tpm" --ctrl type=unixio,path="$work/tpm/ctrl" --terminate \
    >"$work/swtpm.log" 2>&1 &
swtpm_pid=$!
for _ in 1 2 3 4 5 6 7 8 9 10; do [ -S "$work/tpm/ctrl" ] && break; sleep 0.5; done

start=$(date +%s)
boot "$work/bmc.txt" none,udev,all,esx,generation \
    -device ipmi-bmc-sim,id=bmc0,fwrev1=2,fwrev2=0x17 -device isa-ipmi-kcs,bmc=bmc0 \
    -chardev socket,id=chrtpm,path="$work/tpm/ctrl" -tpmdev emulator,id=tpm0,chardev=chrtpm \
    -device tpm-tis,tpmdev=tpm0 \
    -device megasas-gen2,id=mr0 -drive "file=$work/megaraid.img,if=none,id=mrd,format=raw" \
    -device scsi-hd,drive=mrd,bus=mr0.0 \
    -device mptsas1068,id=mpt0 -drive "file=$work/mptsas.img,if=none,id=mptd,format=raw" \
    -device scsi-hd,drive=mptd,bus=mpt0.0
boot "$work/nobmc.txt" nocontroller
echo "two boots in $(( $(date +%s) - start )) s ($accel)"

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
section() {  # console state: the lines of that state's run
    tr -d '\r' < "$1" | sed -n "/^@@BEGIN $2\$/,/^@@END $2\$/p"
}
field() {  # console state key
    section "$1" "$2" | sed -n "s/^@@$3 \\{0,1\\}//p" | head -1 | sed 's/ *$//'
}
guest() {  # console key: what the guest itself shows
    tr -d '\r' < "$1" | sed -n "s/^@@GUEST $2=//p" | head -1
}
commands() {  # console state: the module commands the collector ran, one per line
    section "$1" "$2" | sed -n 's/^@@COMMAND Command :\{0,1\} *\(lsmod\|modprobe\|rmmod\)/\1/p' |
        sed 's/ *> \/dev\/null 2>&1.*//; s/  */ /g'
}
app_version() {  # console state FQDD-or-display: that device's firmware (or BIOS) version
    section "$1" "$2" | sed -n "/^@@INVENTORY/,/^@@ERRORS/p" | grep -a -A1 "$3" |
        grep -a 'componentType="\(FRMW\|BIOS\)"' | sed -n 's/.*<Application .*version="\([^"]*\)".*/\1/p' | head -1
}
expect() {  # what actual expected
    [ "$2" = "$3" ] || fail "$1: got '$2', expected '$3'"
}

for state in none udev all esx generation; do
    expect "$state: exit status" "$(field "$work/bmc.txt" "$state" STATUS)" 1
    expect "$state: IPMI modules after the run" "$(field "$work/bmc.txt" "$state" AFTER)" \
        "$(field "$work/bmc.txt" "$state" BEFORE)"
    expect "$state: standard error" "$(section "$work/bmc.txt" "$state" | sed -n '/^@@STDERR/,/^@@END/p' | sed '1d;$d')" ""
done
expect "none: modules before" "$(field "$work/bmc.txt" none BEFORE)" ""
expect "udev: modules before" "$(field "$work/bmc.txt" udev BEFORE)" "acpi_ipmi ipmi_msghandler ipmi_si"
expect "none: module commands" "$(commands "$work/bmc.txt" none | tr '\n' ';')" \
    "lsmod | grep ipmi_msghandler;lsmod | grep ipmi_devintf;lsmod | grep ipmi_si;modprobe ipmi_msghandler;modprobe ipmi_devintf;modprobe ipmi_si;rmmod acpi_ipmi;rmmod ipmi_si;rmmod ipmi_devintf;rmmod ipmi_msghandler;"
expect "udev: module commands" "$(commands "$work/bmc.txt" udev | tr '\n' ';')" \
    "lsmod | grep ipmi_msghandler;lsmod | grep ipmi_devintf;lsmod | grep ipmi_si;modprobe ipmi_devintf;rmmod ipmi_devintf;"
expect "all: module commands" "$(commands "$work/bmc.txt" all | tr '\n' ';')" \
    "lsmod | grep ipmi_msghandler;lsmod | grep ipmi_devintf;lsmod | grep ipmi_si;"
expect "esx: module commands" "$(commands "$work/bmc.txt" esx)" ""

# The inventory against the guest's own view.
for state in none udev all; do
    expect "$state: BIOS version" "$(app_version "$work/bmc.txt" "$state" 'FQDD="BIOS.System.1"')" \
        "$(guest "$work/bmc.txt" dmi_bios_version)"
    expect "$state: NIC firmware" "$(app_version "$work/bmc.txt" "$state" 'display="Intel Corporation 82574L')" \
        "$(guest "$work/bmc.txt" nic_firmware)"
    # Get Device ID: firmware revision 2 (major) and 0x17 (BCD minor) as set on the device.
    expect "$state: management controller firmware" "$(app_version "$work/bmc.txt" "$state" 'FQDD="BMC.Embedded.1"')" "2.17"
done
expect "guest BIOS version" "$(guest "$work/bmc.txt" dmi_bios_version)" "2.19.7"

# NVMe: the revision the controller runs, Identify Controller's FR as nvme-cli
# shows it. QEMU's firmware slot log is a stub whose slot 1 says "1.0".
nvme_fr=$(guest "$work/bmc.txt" nvme_fr)
[ -n "$nvme_fr" ] || fail "the guest shows no Identify Controller firmware revision"
echo "NVMe: Identify FR '$nvme_fr', sysfs firmware_rev '$(guest "$work/bmc.txt" nvme_firmware_rev)'"
for state in none udev all; do
    expect "$state: NVMe firmware (Identify FR)" "$(app_version "$work/bmc.txt" "$state" 'FQDD="NVMe.')" "$nvme_fr"
done
expect "NVMe source in storageinv's log" \
    "$(guest "$work/bmc.txt" storageinv_log | grep -o "nvme0: firmware [^;]* from Identify Controller")" \
    "nvme0: firmware $nvme_fr from Identify Controller"

# MegaRAID: the package version QEMU sets, its hardware version (what it gives
# its SCSI disks as their revision) followed by "-QEMU", through the private
# management node, which is gone after each run. Its disk is a logical volume
# on channel 2: not a disk of the inventory.
mr_pci=$(guest "$work/bmc.txt" megaraid_sas_pci) mr_host=$(guest "$work/bmc.txt" megaraid_sas_host)
mr_disk=$(guest "$work/bmc.txt" megaraid_sas_disk)
hw_version=${mr_disk#* }
echo "MegaRAID: host $mr_host on $mr_pci, disk $mr_disk"
[ -n "$mr_pci" ] && [ -n "$hw_version" ] || fail "the guest shows no megaraid_sas host with a disk"
expect "MegaRAID disk channel" "$(echo "$mr_disk" | cut -d: -f2)" 2
# Fusion MPT SAS: version_fw as the driver prints QEMU's IOC facts (1, 0x32, 0x92, 0).
mpt_pci=$(guest "$work/bmc.txt" mptsas_pci) mpt_disk=$(guest "$work/bmc.txt" mptsas_disk)
expect "guest mptsas version_fw" "$(guest "$work/bmc.txt" mptsas_version_fw)" "01.50.146.00"
echo "storageinv's log: $(guest "$work/bmc.txt" storageinv_log)"
section "$work/bmc.txt" none | sed -n "/^@@INVENTORY/,/^@@ERRORS/p" | grep -a -A1 "enum=\"$mr_pci\"" |
    grep -a 'componentType="FRMW"' | sed 's/^ */MegaRAID: /'
for state in none udev all; do
    expect "$state: MegaRAID firmware" "$(app_version "$work/bmc.txt" "$state" "enum=\"$mr_pci\"")" "$hw_version-QEMU"
    section "$work/bmc.txt" "$state" | grep -aq 'firmware package (megaraid_sas): APP ' ||
        fail "$state: the MegaRAID firmware display lists no APP image"
    if section "$work/bmc.txt" "$state" | grep -aq "scsi-${mr_disk%% *}\""; then
        fail "$state: the MegaRAID logical volume ${mr_disk%% *} is reported as a disk"
    fi
    expect "$state: megaraid_sas nodes after the run" "$(field "$work/bmc.txt" "$state" NODES)" ""
    expect "$state: Fusion MPT SAS firmware" "$(app_version "$work/bmc.txt" "$state" "enum=\"$mpt_pci\"")" \
        "01.50.146.00"
    expect "$state: Fusion MPT SAS disk" \
        "$(app_version "$work/bmc.txt" "$state" "FQDD=\"Disk.$mpt_pci.scsi-${mpt_disk%% *}\"")" "${mpt_disk#* }"
done

# TPM: the two firmware words and the vendor as tpm2_getcap shows them.
fw1=$(guest "$work/bmc.txt" tpm_fw1) fw2=$(guest "$work/bmc.txt" tpm_fw2)
if [ -z "$fw1" ] || [ -z "$fw2" ]; then
    fail "the guest shows no TPM firmware version (tpm2_getcap status $(guest "$work/bmc.txt" tpm_getcap_status))"
else
    # The software TPM writes its words as hex digits (a date, then a build):
    # their halves read in hex.
    tpm_version=$(printf '%x.%x.%x.%x' $((fw1 >> 16)) $((fw1 & 0xffff)) $((fw2 >> 16)) $((fw2 & 0xffff)))
    for state in none udev all; do
        expect "$state: TPM firmware" "$(app_version "$work/bmc.txt" "$state" 'FQDD="TPM.tpm0"')" "$tpm_version"
        section "$work/bmc.txt" "$state" | grep -aq "display=\"TPM 2.0 ($(guest "$work/bmc.txt" tpm_manufacturer))\"" ||
            fail "$state: TPM display does not name the manufacturer"
    done
fi
# Neither source leaves an error behind where it is present.
for state in none udev all; do
    if section "$work/bmc.txt" "$state" | sed -n '/^@@ERRORS/,/^@@STDERR/p' |
        grep -aq 'module="/\(fwinv\|storageinv\)"'; then
        fail "$state: the error document has a record of fwinv or storageinv"
    fi
done

# Completion code 0xC1 to the generation request: only the oldest generation's modules.
generation=$(section "$work/bmc.txt" generation)
echo "$generation" | grep -q 'componentID="pre12"' || fail "generation: the GenPre12G module did not run"
if echo "$generation" | grep -q 'componentID="g14"'; then fail "generation: the GenFourteenG module ran"; fi

# No controller: ipmi_si cannot load, the device never opens; still nothing stays loaded.
expect "nocontroller: modules before" "$(field "$work/nobmc.txt" nocontroller BEFORE)" ""
expect "nocontroller: modules after" "$(field "$work/nobmc.txt" nocontroller AFTER)" ""
expect "nocontroller: exit status" "$(field "$work/nobmc.txt" nocontroller STATUS)" 1
commands "$work/nobmc.txt" nocontroller | grep -q '^rmmod ipmi_msghandler' ||
    fail "nocontroller: ipmi_msghandler was not unloaded"

if [ "$failures" -ne 0 ]; then
    echo "$failures check(s) failed; consoles:"
    for c in "$work"/bmc.txt "$work"/nobmc.txt; do echo "== $c"; tr -d '\r' < "$c" | grep -a '^@@' ; done
    exit 1
fi
echo "all real-kernel checks passed"
