#!/bin/sh
# The guest's init: brings up the file systems and udev's module autoloading,
# then runs the collector once per IPMI module state named on the kernel
# command line (sorvik_states=none,udev,all,esx), printing each run's facts
# between markers on the console, and powers off.
PATH=/sbin:/bin:/usr/sbin:/usr/bin
export PATH
mount -t proc proc /proc
mount -t sysfs sys /sys
mount -t devtmpfs dev /dev
mount -t tmpfs tmp /tmp
mount -t tmpfs lock /run/lock
exec </dev/console >/dev/console 2>&1

# As udev does: a device event with a module alias loads the module.
cat > /sbin/hotplug <<'HOTPLUG'
#!/bin/sh
[ "$ACTION" = add ] && [ -n "$MODALIAS" ] && modprobe -q "$MODALIAS" 2>/dev/null
exit 0
HOTPLUG
chmod +x /sbin/hotplug
echo /sbin/hotplug > /proc/sys/kernel/hotplug
coldplug() {
    for alias in $(cat /sys/bus/*/devices/*/modalias 2>/dev/null | sort -u); do
        modprobe -q "$alias" 2>/dev/null
    done
}
coldplug
modprobe nvme 2>/dev/null
modprobe e1000e 2>/dev/null
modprobe sd_mod 2>/dev/null
modprobe megaraid_sas 2>/dev/null
modprobe mptsas 2>/dev/null
sleep 1
# The SCSI controllers scan their buses after probing: wait for both disks.
for _ in 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20; do
    [ "$(ls /sys/class/scsi_disk 2>/dev/null | wc -l)" -ge 2 ] && break
    sleep 1
done
ip link set eth0 up 2>/dev/null

ipmi_modules() {
    lsmod | awk 'NR > 1 && ($1 ~ /^ipmi_/ || $1 == "acpi_ipmi") { print $1 }' | sort | tr '\n' ' '
}
unload_ipmi() {
    for m in acpi_ipmi ipmi_ssif ipmi_si ipmi_devintf ipmi_msghandler; do rmmod "$m" 2>/dev/null; done
}

state_list=$(sed -n 's/.*sorvik_states=\([^ ]*\).*/\1/p' /proc/cmdline | tr ',' ' ')
echo "@@GUEST dmi_bios_version=$(cat /sys/class/dmi/id/bios_version 2>/dev/null)"
echo "@@GUEST dmi_bios_vendor=$(cat /sys/class/dmi/id/bios_vendor 2>/dev/null)"
echo "@@GUEST dmi_product=$(cat /sys/class/dmi/id/product_name 2>/dev/null)"
echo "@@GUEST nvme_firmware_rev=$(cat /sys/class/nvme/nvme0/firmware_rev 2>/dev/null | tr -d ' ')"
# The NVMe controller's firmware slot log and the TPM's fixed properties, as
# the tools show them, and where the storage module took the NVMe revision from.
nvme fw-log /dev/nvme0 2>&1 | sed 's/^/@@GUEST nvme_fw_log=/'
echo "@@GUEST storageinv_log=$(cd /opt/sorvik/libexec/sorvik/storageinv && ./storageinv 2>&1 >/dev/null | tr '\n' ';')"
if [ -e /dev/tpmrm0 ]; then
    tpm2_getcap -T device:/dev/tpmrm0 properties-fixed > /tmp/tpmcap 2>&1
    echo "@@GUEST tpm_getcap_status=$?"
    echo "@@GUEST tpm_manufacturer=$(sed -n '/^TPM2_PT_MANUFACTURER:/,/value:/s/.*value: "\(.*\)"/\1/p' /tmp/tpmcap)"
    echo "@@GUEST tpm_fw1=$(sed -n '/^TPM2_PT_FIRMWARE_VERSION_1:/{n;s/.*raw: //p;}' /tmp/tpmcap)"
    echo "@@GUEST tpm_fw2=$(sed -n '/^TPM2_PT_FIRMWARE_VERSION_2:/{n;s/.*raw: //p;}' /tmp/tpmcap)"
fi
# The NVMe controller's running revision (Identify Controller FR) as nvme-cli shows it.
echo "@@GUEST nvme_fr=$(nvme id-ctrl /dev/nvme0 2>/dev/null | sed -n 's/^fr  *: *//p' | sed 's/ *$//')"
# The SCSI hosts: each driver's host, its PCI function, its disks with their revisions.
for host in /sys/class/scsi_host/host*; do
    driver=$(cat "$host/proc_name" 2>/dev/null)
    case $driver in megaraid_sas | mptsas) ;; *) continue ;; esac
    number=${host##*/host}
    echo "@@GUEST ${driver}_host=$number"
    echo "@@GUEST ${driver}_pci=$(basename "$(dirname "$(readlink -f "$host/device")")")"
    [ -e "$host/version_fw" ] && echo "@@GUEST ${driver}_version_fw=$(cat "$host/version_fw")"
    for device in /sys/bus/scsi/devices/"$number":*; do
        [ -e "$device/rev" ] || continue
        echo "@@GUEST ${driver}_disk=${device##*/} $(cat "$device/rev" | sed 's/ *$//')"
    done
done
echo "@@GUEST nic_firmware=$(ethtool -i eth0 2>/dev/null | sed -n 's/^firmware-version: //p')"
echo "@@GUEST nic_driver=$(ethtool -i eth0 2>/dev/null | sed -n 's/^driver: //p')"

for state in $state_list; do
    case $state in
    none) unload_ipmi ;;
    udev) unload_ipmi; coldplug; rmmod ipmi_devintf 2>/dev/null ;;
    all) coldplug; modprobe ipmi_devintf ;;
    esx) echo "VMware ESX 4.1.0 (Kandinsky)" > /etc/vmware-release ;;
    nocontroller) unload_ipmi ;;
    generation) coldplug; modprobe ipmi_devintf ;;
    esac
    sleep 1
    before=$(ipmi_modules)
    cd /opt/sorvik/libexec/sorvik || exit 1
    if [ "$state" = generation ]; then
        # Modules under two generations: the controller's answer picks one.
        mkdir -p /tmp/gen/pre12 /tmp/gen/g14 && cd /tmp/gen || exit 1
        for m in pre12 g14; do
            printf '#!/bin/sh\necho "<SVMInventory><Device componentID=\\"%s\\" display=\\"%s\\" FQDD=\\"%s.1\\"><Application componentType=\\"FRMW\\" version=\\"1\\" display=\\"%s\\"/></Device></SVMInventory>"\n' "$m" "$m" "$m" "$m" > "$m/$m"
            chmod +x "$m/$m"
        done
        echo '{"SorVikConfig": {"Generation": [
          {"_type": "GenPre12G", "InvComponent": [{"_dir": "/pre12", "_type": "cli", "__text": "pre12"}]},
          {"_type": "GenFourteenG", "InvComponent": [{"_dir": "/g14", "_type": "cli", "__text": "g14"}]}]}}' > icconfig_new.json
    fi
    rm -f bqmipmi.log bqmipmi_internal.log /tmp/inv.xml /tmp/err.xml
    touch kpxdebuglog
    start=$(cut -d' ' -f1 /proc/uptime)
    /opt/sorvik/sbin/sorvik -outc=/tmp/inv.xml -enc=UTF-8 -logc=/tmp/err.xml > /tmp/out.txt 2> /tmp/stderr.txt
    status=$?
    end=$(cut -d' ' -f1 /proc/uptime)
    sleep 1
    after=$(ipmi_modules)
    echo "@@BEGIN $state"
    echo "@@STATUS $status"
    echo "@@SECONDS $(echo "$start $end" | awk '{ print $2 - $1 }')"
    echo "@@BEFORE $before"
    echo "@@AFTER $after"
    # The megaraid_sas management node the storage module makes for itself is gone again.
    echo "@@NODES $(ls -d /dev/megaraid_sas_ioctl_node /dev/sorvik-mfi.* 2>/dev/null | tr '\n' ' ')"
    grep -h "Command" bqmipmi*.log 2>/dev/null | sed 's/^.*Command/@@COMMAND Command/'
    echo "@@INVENTORY"
    cat /tmp/inv.xml 2>/dev/null
    echo "@@ERRORS"
    cat /tmp/err.xml 2>/dev/null
    echo "@@STDERR"
    cat /tmp/stderr.txt
    echo "@@END $state"
    rm -f /etc/vmware-release kpxdebuglog /opt/sorvik/libexec/sorvik/kpxdebuglog
done
echo "@@DONE"
poweroff -f
