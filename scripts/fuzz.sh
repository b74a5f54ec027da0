#!/usr/bin/env bash
# The fuzzing behind `./run fuzz` (fuzz preset): every libFuzzer program in
# BUILD_DIR/fuzz runs for SECONDS, one after the other, on a working corpus
# BUILD_DIR/corpus/<name> seeded from fuzz/corpus/<name>. An input that
# crashes a target (or leaks, times out or runs out of memory) is copied into
# fuzz/regressions/<name>/, named by its SHA-1, where the CTest test
# fuzz.<name> replays it from then on. Ends with one table; exits 1 when any
# target failed.
set -euo pipefail
build="${1:?usage: scripts/fuzz.sh BUILD_DIR SECONDS_PER_TARGET}"
seconds="${2:?usage: scripts/fuzz.sh BUILD_DIR SECONDS_PER_TARGET}"

# Per input; the whole run is bounded by -max_total_time.
timeout_seconds=10
rss_limit_mb=2048

mapfile -t programs < <(find "$build/fuzz" -maxdepth 1 -type f -name '*_fuzz' -perm -u+x | sort)
if [ "${#programs[@]}" -eq 0 ]; then
  echo "error: no fuzz targets in $build/fuzz" >&2
  exit 1
fi

rows=()
failed=0
for program in "${programs[@]}"; do
  name="$(basename "$program" _fuzz)"
  corpus="$build/corpus/$name"
  artifacts="$build/artifacts/$name"
  log="$build/artifacts/$name.log"
  mkdir -p "$corpus" "$artifacts"
  rm -f "$artifacts"/*
  if [ -d "fuzz/corpus/$name" ]; then
    cp -n "fuzz/corpus/$name"/* "$corpus"/ 2>/dev/null || true
  fi
  args=(-max_total_time="$seconds" -timeout="$timeout_seconds" -rss_limit_mb="$rss_limit_mb"
        -artifact_prefix="$artifacts/" -print_final_stats=1)
  [ -f "fuzz/$name.dict" ] && args+=(-dict="fuzz/$name.dict")

  echo "==> $name: ${seconds}s (log: $log)"
  start=$(date +%s)
  status=0
  "$program" "${args[@]}" "$corpus" >"$log" 2>&1 || status=$?
  elapsed=$(( $(date +%s) - start ))

  execs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)"
  rate="$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -n 1)"
  size="$(find "$corpus" -type f | wc -l)"
  result=ok
  kept=0
  for input in "$artifacts"/crash-* "$artifacts"/leak-* "$artifacts"/timeout-* "$artifacts"/oom-*; do
    [ -f "$input" ] || continue
    hash="$(sha1sum "$input" | cut -d' ' -f1)"
    mkdir -p "fuzz/regressions/$name"
    cp "$input" "fuzz/regressions/$name/$hash"
    echo "    $(basename "$input"): kept as fuzz/regressions/$name/$hash"
    kept=$((kept + 1))
  done
  if [ "$kept" -gt 0 ]; then
    result="FAILED ($kept kept)"
  elif [ "$status" -ne 0 ]; then
    result="FAILED (exit $status)"
  fi
  if [ "$result" != ok ]; then
    failed=1
    grep -m 1 -A 12 -E '^==[0-9]+==ERROR|runtime error|deadly signal|^ERROR' "$log" | sed 's/^/    /' || true
  fi
  rows+=("$(printf '%-28s %7s %12s %9s %8s  %s' "$name" "$elapsed" "${execs:--}" "${rate:--}" "$size" "$result")")
done

echo
printf '%-28s %7s %12s %9s %8s  %s\n' target seconds executions "exec/s" corpus result
printf '%s\n' "${rows[@]}"
if [ "$failed" -ne 0 ]; then
  echo
  echo "fuzzing found failures: the inputs are in fuzz/regressions/ (commit them with the fix)"
  exit 1
fi
