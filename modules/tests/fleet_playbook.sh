#!/bin/sh
# Runs the fleet playbook against this host alone (local connection) with a
# stand-in collector and checks that it fetches what the collector wrote and
# loads it into a fleet store with the built sorvik-audit, once however often
# it runs.
# Usage: fleet_playbook.sh FLEET_DIR [SORVIK_AUDIT]
# SORVIK_AUDIT defaults to the build tree's program as seen from the test's
# working directory (build/modules/tests).
fleet=$1
audit=${2:-$PWD/../../sorvik-audit/sorvik-audit}
. "$(dirname "$0")/testlib.sh"
need ansible-playbook "Debian package ansible-core"
[ -x "$audit" ] || { echo "FAIL: no sorvik-audit at $audit"; exit 1; }
inventory='{"UpdatableComponentsInventory": {"System": {"systemID": "STUB"}, "UpdateableComponent": [{"name": "BIOS", "componentType": "BIOS", "version": "1.2.3"}]}}'
# The stand-in honours -outc, needs the module directory's configuration in its
# working directory and exits 1, as a run that found devices does.
cat >"$work/sorvik" <<STUB
#!/bin/sh
for a in "\$@"; do case \$a in -outc=*) out=\${a#-outc=} ;; esac; done
[ -f icconfig_new.json ] || exit 2
echo '$inventory' >"\$out"
exit 1
STUB
chmod +x "$work/sorvik"
echo '{}' >"$work/icconfig_new.json"
py=/usr/bin/python3; [ -x $py ] || py=$(command -v python3)
echo "localhost ansible_connection=local ansible_python_interpreter=$py" >"$work/hosts"
play() {
    if ANSIBLE_LOCAL_TEMP=$work/tmp ANSIBLE_REMOTE_TEMP=$work/tmp ANSIBLE_NOCOLOR=1 ansible-playbook -i "$work/hosts" \
        "$fleet/sorvik-inventory.yml" -e ansible_become=false -e "sorvik_bin=$work/sorvik" -e "sorvik_module_dir=$work" \
        -e "sorvik_fetch_dir=$work/out" -e "sorvik_audit_bin=$audit" -e "sorvik_store_url=sqlite:$work/fleet.db" \
        >"$work/log" 2>&1; then ok; else bad "playbook failed"; cat "$work/log"; fi
}
play
expect "fetched inventory" "$(cat "$work/out/localhost.json" 2>/dev/null)" "$inventory"
# The store holds the host's collection, and checks against a baseline.
echo '{"schemaVersion": 1, "rules": [{"match": {"componentType": "BIOS"}, "min": "1.2"}]}' >"$work/baseline.json"
expect "fleet check" "$("$audit" check --db "sqlite:$work/fleet.db" --baseline "$work/baseline.json" | tail -n 1)" \
    "localhost  1          0         0      0        0"
play
expect "collections after a second run" "$(python3 -c 'import sqlite3,sys; print(sqlite3.connect(sys.argv[1]).execute("SELECT COUNT(*) FROM collections").fetchone()[0])' "$work/fleet.db")" 1
if [ -z "$(find /tmp -maxdepth 1 -name 'sorvik-*.json' -newer "$work/hosts")" ]; then ok; else bad "the remote temporary file was left behind"; fi
finish
