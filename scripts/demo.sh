#!/usr/bin/env bash
# The guided tour behind `./run demo`: start qvk-emulator on a free loopback
# port, walk through the main job against it, stop the emulator.
set -euo pipefail
build="${1:?usage: scripts/demo.sh BUILD_DIR}"
emulator="$build/emulator/qvk-emulator"
tour="$build/tools/velmaro-tour/velmaro-tour"

for program in "$emulator" "$tour"; do
  [ -x "$program" ] || { echo "error: $program was not built (run ./run build)" >&2; exit 1; }
done

workdir="$(mktemp -d)"
emulator_pid=""
cleanup() {
  if [ -n "$emulator_pid" ]; then kill -TERM "$emulator_pid" 2>/dev/null || true; wait "$emulator_pid" 2>/dev/null || true; fi
  rm -rf "$workdir"
}
trap cleanup EXIT INT TERM

# The emulator prints its base URL as the first line of its output.
mkfifo "$workdir/url"
"$emulator" --port 0 --quiet >"$workdir/url" &
emulator_pid=$!
read -r -t 20 url <"$workdir/url" || { echo "error: qvk-emulator did not start" >&2; exit 1; }
# Keep draining its output so that it never blocks on a full pipe.
cat "$workdir/url" >/dev/null &

echo "qvk-emulator is serving the sample Help Center at $url"
echo
"$tour" --url "$url" --data-dir "$workdir/data"
