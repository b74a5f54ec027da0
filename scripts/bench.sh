#!/usr/bin/env bash
# The benchmarks behind `./run bench` (release build): the in-process parse
# figure and the memory of a long list answer with Google Benchmark, the wire
# figures with a loopback driver against a real qvk-emulator, then one table
# of all of them. The figures are also written as JSON to
# BUILD_DIR/bench-results.json.
set -euo pipefail
build="${1:?usage: scripts/bench.sh BUILD_DIR}"
b1="$build/bench/parse-bench.json"
b5="$build/bench/memory-bench.json"

echo "==> in-process: Help Center parse against the bare JSON parse (Google Benchmark)"
"$build/bench/velmaro_bench" \
  --benchmark_repetitions=15 \
  --benchmark_enable_random_interleaving=true \
  --benchmark_min_time=0.2 \
  --benchmark_report_aggregates_only=true \
  --benchmark_out="$b1" --benchmark_out_format=json

echo
echo "==> in-process: peak memory of a 30 MB list answer made into records (target < 6x)"
"$build/bench/velmaro_memory_bench" --benchmark_filter=BM_CategoriesStreamed \
  --benchmark_out="$b5" --benchmark_out_format=json

echo
echo "==> on the wire: provider calls against raw libcurl, same qvk-emulator, interleaved"
"$build/bench/velmaro_wire_bench" --b1 "$b1" --b5 "$b5" --out "$build/bench-results.json"
echo
echo "figures written to $build/bench-results.json"
