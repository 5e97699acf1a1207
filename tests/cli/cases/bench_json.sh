# The figures agree with each other.
printf '1,A,,[],x\n2,B,,[C,1,[];],\n' >orders
cvt2 bench -m Order -f toy -t invoice --framing line --seconds 0.2 --json orders >figures
wc -l <figures
python3 - figures <<'PY'
import json, sys
b = json.load(open(sys.argv[1]))
times = b["ns_per_message"]
whole = times["whole"]["mean"]


def near(a, b):
    return abs(a - b) <= 0.01 * max(a, b) + 0.5


print(list(b))
print(list(times), b["read"], b["refused"], b["held_bytes"])
assert b["measured"] > 10
assert near(sum(times[stage]["mean"] for stage in ("parse", "convert", "generate", "release")), whole), b
assert whole > 0 and all(0 <= t["p50"] <= t["p99"] <= t["max"] for t in times.values()), b
assert near(b["messages_per_second"], 1e9 / whole), b
assert near(b["input"]["mb_per_second"], b["input"]["bytes"] / b["measured"] * b["messages_per_second"] / 1e6), b
assert abs(b["input"]["bytes"] - b["measured"] * b["held_bytes"] / 2) <= b["held_bytes"], b
assert 0 < b["output"]["bytes"] < b["input"]["bytes"], b
assert 0.2 <= b["seconds"] < 10 and b["measured"] * whole <= b["seconds"] * 1e9, b
assert b["cpu_seconds"] <= 1.01 * b["seconds"], b
assert near(b["cpu_ns_per_message"], whole * b["cpu_seconds"] / b["seconds"]), b
assert b["peak_memory_bytes"] > b["held_bytes"], b
PY
echo "exit $?"
