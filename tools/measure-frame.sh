#!/usr/bin/env bash
# Start-up time and frames per second of the running game, each the median
# of several runs on a virtual 1280x720 display with Mesa's software renderer.
#   tools/measure-frame.sh [build-dir] [runs] [seconds per run] [play]
# With "play" each run is a match: once the window shows, the view turns to
# the ship and a shot is fired at the centre every quarter of a second; the
# rate is counted over the given seconds of that play.
# Reported per run:
#   start-up   process start to the first swapped frame;
#   populated  process start to the first frame drawn after the first world
#              update, the one that places the rocks (the game updates its
#              world at most 50 times a second, so 20 ms after its loop
#              starts);
#   rate       frames per second (all of the run, or the play window);
#   peak       the most resident memory the process held;
#   processor  processor time of all its threads per frame (whole run), which
#              other work on the machine disturbs less than the rate.
# A small preloaded library counts glfwSwapBuffers calls; the game itself is
# not changed. Each run is closed with Escape.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
runs=${2:-5}
seconds=${3:-5}
mode=${4:-idle}
[[ -x $build/quorbane ]] || { echo "no $build/quorbane: build first" >&2; exit 1; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat >"$work/swapcount.c" <<'EOF'
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <sys/resource.h>
#include <stdlib.h>
#include <time.h>

static double firstSwap = -1.0, lastSwap = -1.0, populated = -1.0;
static double windowStart = -1.0, windowFirst = -1.0;
static long swaps = 0, windowSwaps = 0;

static double now(void)
{
    struct timespec t;
    clock_gettime(CLOCK_REALTIME, &t);
    return (double)t.tv_sec + (double)t.tv_nsec * 1e-9;
}

// The game's loop updates its world after the first swap that comes at
// least 20 ms after its start; the swap after that shows the update.
static double updateDue = -1.0;

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
        const char* from = getenv("SWAPCOUNT_FROM");
        if (from != NULL) {
            windowStart = atof(from);
        }
    }
    if (populated < 0.0) {
        if (updateDue >= 0.0) {
            populated = t;
        } else if (t - firstSwap >= 0.02) {
            updateDue = t;
        }
    }
    if (windowStart >= 0.0 && t >= windowStart) {
        if (windowSwaps == 0) {
            windowFirst = t;
        }
        ++windowSwaps;
        lastSwap = t;
    }
    ++swaps;
    if (windowStart < 0.0) {
        lastSwap = t;
    }
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
    double rate = (double)(swaps - 1) / (lastSwap - firstSwap);
    long counted = swaps;
    if (windowStart >= 0.0) {
        rate = windowSwaps > 1 ? (double)(windowSwaps - 1) / (lastSwap - windowFirst) : 0.0;
        counted = windowSwaps;
    }
    // The peak resident memory of the run, in megabytes.
    long peak = 0;
    FILE* status = fopen("/proc/self/status", "r");
    if (status != NULL) {
        char line[256];
        while (fgets(line, sizeof line, status) != NULL) {
            if (sscanf(line, "VmHWM: %ld", &peak) == 1) {
                break;
            }
        }
        fclose(status);
    }
    // Processor time of all the process's threads (the renderer's included)
    // per frame: what a frame costs, whatever else the machine runs.
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    const double cpu = (double)usage.ru_utime.tv_sec + (double)usage.ru_utime.tv_usec * 1e-6 +
                       (double)usage.ru_stime.tv_sec + (double)usage.ru_stime.tv_usec * 1e-6;
    fprintf(f, "%.4f %.4f %.1f %ld %.1f %.2f\n", firstSwap - atof(start), populated - atof(start), rate, counted,
            (double)peak / 1024.0, 1000.0 * cpu / (double)swaps);
    fclose(f);
}
EOF
cc -shared -fPIC -O2 -o "$work/swapcount.so" "$work/swapcount.c" -ldl

cat >"$work/one-run.sh" <<'EOF'
#!/usr/bin/env bash
# $1 game, $2 preload, $3 result file, $4 seconds, $5 mode
start=$(date +%s.%N)
if [[ $5 == play ]]; then
  # Counting starts once the match has begun: 2 s after start-up.
  from=$(awk -v s="$start" 'BEGIN {printf "%.3f", s + 2}')
  SWAPCOUNT_OUT=$3 SWAPCOUNT_START=$start SWAPCOUNT_FROM=$from LD_PRELOAD=$2 "$1" >/dev/null 2>&1 &
else
  SWAPCOUNT_OUT=$3 SWAPCOUNT_START=$start LD_PRELOAD=$2 "$1" >/dev/null 2>&1 &
fi
game=$!
wid=$(timeout 60 xdotool search --sync --pid "$game" 2>/dev/null | head -n 1)
if [[ $5 == play && -n $wid ]]; then
  xdotool windowfocus "$(xdotool search --maxdepth 0 '' | head -n 1)" 2>/dev/null || true
  sleep 1
  # Towards the ship, as ./play's demo does, then shots at the centre.
  xdotool key --window "$wid" --delay 60 Right Right Right Right Right Right Right Down Down Down Down Down s s
  end=$(( $(date +%s) + 1 + $4 ))
  while (( $(date +%s) < end )); do
    xdotool mousemove --window "$wid" 640 360 click 1
    sleep 0.25
  done
else
  sleep "$4"
fi
[[ -n $wid ]] && xdotool key --window "$wid" Escape 2>/dev/null
wait "$game"
EOF
chmod +x "$work/one-run.sh"

export LIBGL_ALWAYS_SOFTWARE=1
echo "load before: $(cut -d' ' -f1-3 /proc/loadavg)"
for i in $(seq 1 "$runs"); do
  xvfb-run -a -s "-screen 0 1280x720x24" "$work/one-run.sh" "$PWD/$build/quorbane" "$work/swapcount.so" \
    "$work/run$i.txt" "$seconds" "$mode" || true
  if [[ -f $work/run$i.txt ]]; then
    read -r startup populated fps frames peak cpu <"$work/run$i.txt"
    echo "run $i: start-up ${startup} s, populated ${populated} s, ${fps} frames/s over ${frames} frames," \
      "peak resident ${peak} MB, ${cpu} ms of processor a frame"
  else
    echo "run $i: no measurement (the game did not reach its loop or did not exit)"
  fi
done
echo "load after:  $(cut -d' ' -f1-3 /proc/loadavg)"

median() { sort -n | awk '{v[NR]=$1} END {if (NR == 0) print "n/a"; else if (NR % 2) print v[(NR+1)/2]; else print (v[NR/2]+v[NR/2+1])/2}'; }
echo "median start-up to first frame:      $(cat "$work"/run*.txt 2>/dev/null | awk '{print $1}' | median) s"
echo "median start-up to populated frame:  $(cat "$work"/run*.txt 2>/dev/null | awk '{print $2}' | median) s"
echo "median frames per second:            $(cat "$work"/run*.txt 2>/dev/null | awk '{print $3}' | median)"
echo "median peak resident memory:         $(cat "$work"/run*.txt 2>/dev/null | awk '{print $5}' | median) MB"
echo "median processor time a frame:       $(cat "$work"/run*.txt 2>/dev/null | awk '{print $6}' | median) ms"
