#!/usr/bin/env bash
# The benchmarks behind `./run bench` (release build): the in-process parse
# figures and the memory of a long list answer with Google Benchmark, the wire
# figures with a loopback driver against a real qvk-emulator, then one table
# of all of them. The figures are also written as JSON to
# BUILD_DIR/bench-results.json.
set -euo pipefail
build="${1:?usage: scripts/bench.sh BUILD_DIR}"
b1="$build/bench/parse-bench.json"
m1="$build/bench/memory-bench.json"

echo "==> in-process: list answers to records against the bare JSON parse, pair by pair (Google Benchmark)"
"$build/bench/velmaro_bench" \
  --benchmark_filter='AgainstBare' \
  --benchmark_repetitions=15 \
  --benchmark_enable_random_interleaving=true \
  --benchmark_min_time=0.2 \
  --benchmark_report_aggregates_only=true \
  --benchmark_out="$b1" --benchmark_out_format=json

echo
echo "==> in-process: M1, peak memory of a 30 MB list answer made into records (target < 6x)"
"$build/bench/velmaro_memory_bench" --benchmark_filter=BM_CategoriesStreamed \
  --benchmark_out="$m1" --benchmark_out_format=json

echo
echo "==> on the wire: provider calls against raw libcurl, same qvk-emulator, interleaved"
"$build/bench/velmaro_wire_bench" --b1 "$b1" --m1 "$m1" --out "$build/bench-results.json" --quartiles
echo
echo "figures written to $build/bench-results.json"
