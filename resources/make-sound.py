#!/usr/bin/env python3
"""Writes the sound of a file that has been made, two soft struck notes a fifth apart, as a WAV file.

usage: make-sound.py FILE

sound.oga beside this script is that file in Ogg Vorbis, made with vorbis-tools:

  ./make-sound.py sound.wav && oggenc --quality 2 --serial 1 --output sound.oga sound.wav

Run it again only to change the sound.
"""

import math
import struct
import sys
import wave

RATE = 22050
# Start in seconds, frequency in hertz, loudness.
NOTES = [(0.0, 783.99, 0.30), (0.085, 1174.66, 0.26)]
# A struck bar: the fundamental and two fainter partials that die away sooner.
PARTIALS = [(1.0, 1.0, 9.0), (2.0, 0.22, 14.0), (3.93, 0.07, 30.0)]
LENGTH = 0.55
ATTACK = 0.004
RELEASE = 0.08


def note(time, frequency):
    if time < 0:
        return 0.0
    attack = min(1.0, time / ATTACK)
    return attack * sum(
        loudness * math.exp(-decay * time) * math.sin(2 * math.pi * frequency * ratio * time)
        for ratio, loudness, decay in PARTIALS
    )


def sample(time):
    release = min(1.0, (LENGTH - time) / RELEASE)
    return release * sum(
        loudness * note(time - start, frequency) for start, frequency, loudness in NOTES
    )


def main():
    frames = [sample(index / RATE) for index in range(int(LENGTH * RATE))]
    with wave.open(sys.argv[1], "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(b"".join(struct.pack("<h", round(32767 * frame)) for frame in frames))


main()
