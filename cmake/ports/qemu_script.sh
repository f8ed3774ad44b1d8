#!/usr/bin/env bash
# qemu_script.sh PROGRAM: writes the script PROGRAM, which runs PROGRAM.arm64 with QEMU.
set -euo pipefail
program=$(realpath "$1")
cat >"$program" <<SCRIPT
#!/bin/sh
exec qemu-aarch64-static -0 '$program' '$program.arm64' "\$@"
SCRIPT
chmod +x "$program"
