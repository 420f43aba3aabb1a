#!/usr/bin/env bash
# The sound decodes to what its script makes, but for what the compression takes away.
set -eu
cd "$(dirname "$0")/../../resources"
for tool in oggdec python3; do
  command -v "$tool" >/dev/null || { echo "skipped: no $tool"; exit 77; }
done
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

python3 make-sound.py "$folder/made.wav"
oggdec --quiet --output "$folder/stored.wav" sound.oga
python3 - "$folder/made.wav" "$folder/stored.wav" <<'END'
import struct, sys, wave

def samples(path):
    with wave.open(path) as file:
        shape = file.getnchannels(), file.getsampwidth(), file.getframerate()
        return shape, struct.unpack(f"<{file.getnframes()}h", file.readframes(file.getnframes()))

(shape, made), (other, stored) = samples(sys.argv[1]), samples(sys.argv[2])
if (shape, len(made)) != (other, len(stored)):
    sys.exit(f"not the same length or kind: {shape} {len(made)}, {other} {len(stored)}")
noise = sum((a - b) ** 2 for a, b in zip(made, stored))
if noise * 100 > sum(a * a for a in made):
    sys.exit("another sound")
END
