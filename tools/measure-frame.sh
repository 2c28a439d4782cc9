#!/usr/bin/env bash
# Start-up time (process start to the first swapped frame) and frames per
# second of the running game, each the median of several runs on a virtual
# 1280x720 display with Mesa's software renderer.
#   tools/measure-frame.sh [build-dir] [runs] [seconds per run]
# A small preloaded library counts glfwSwapBuffers calls; the game itself is
# not changed. Each run is closed with Escape.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
runs=${2:-5}
seconds=${3:-5}
[[ -x $build/quorbane ]] || { echo "no $build/quorbane: build first" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat >"$work/swapcount.c" <<'EOF'
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

static double firstSwap = -1.0, lastSwap = -1.0;
static long swaps = 0;

static double now(void)
{
    struct timespec t;
    clock_gettime(CLOCK_REALTIME, &t);
    return (double)t.tv_sec + (double)t.tv_nsec * 1e-9;
}

void glfwSwapBuffers(void* window)
{
    static void (*real)(void*) = NULL;
    if (real == NULL) {
        real = (void (*)(void*))dlsym(RTLD_NEXT, "glfwSwapBuffers");
    }
    real(window);
    const double t = now();
    if (firstSwap < 0.0) {
        firstSwap = t;
    }
    lastSwap = t;
    ++swaps;
}

__attribute__((destructor)) static void report(void)
{
    const char* start = getenv("SWAPCOUNT_START");
    const char* out = getenv("SWAPCOUNT_OUT");
    if (start == NULL || out == NULL || swaps < 2) {
        return;
    }
    FILE* f = fopen(out, "w");
    if (f == NULL) {
        return;
    }
    fprintf(f, "%.4f %.1f %ld\n", firstSwap - atof(start), (double)(swaps - 1) / (lastSwap - firstSwap), swaps);
    fclose(f);
}
EOF
cc -shared -fPIC -O2 -o "$work/swapcount.so" "$work/swapcount.c" -ldl

cat >"$work/one-run.sh" <<'EOF'
#!/usr/bin/env bash
# $1 game, $2 preload, $3 result file, $4 seconds
SWAPCOUNT_OUT=$3 SWAPCOUNT_START=$(date +%s.%N) LD_PRELOAD=$2 "$1" >/dev/null 2>&1 &
game=$!
sleep "$4"
wid=$(xdotool search --pid "$game" 2>/dev/null | head -n 1)
[[ -n $wid ]] && xdotool key --window "$wid" Escape 2>/dev/null
wait "$game"
EOF
chmod +x "$work/one-run.sh"

export LIBGL_ALWAYS_SOFTWARE=1
for i in $(seq 1 "$runs"); do
  xvfb-run -a -s "-screen 0 1280x720x24" "$work/one-run.sh" "$PWD/$build/quorbane" "$work/swapcount.so" \
    "$work/run$i.txt" "$seconds" || true
  if [[ -f $work/run$i.txt ]]; then
    read -r startup fps frames <"$work/run$i.txt"
    echo "run $i: start-up to first frame ${startup} s, ${fps} frames/s over ${frames} frames"
  else
    echo "run $i: no measurement (the game did not reach its loop or did not exit)"
  fi
done

median() { sort -n | awk '{v[NR]=$1} END {if (NR == 0) print "n/a"; else if (NR % 2) print v[(NR+1)/2]; else print (v[NR/2]+v[NR/2+1])/2}'; }
echo "median start-up to first frame: $(cat "$work"/run*.txt 2>/dev/null | awk '{print $1}' | median) s"
echo "median frames per second:       $(cat "$work"/run*.txt 2>/dev/null | awk '{print $2}' | median)"
