#!/usr/bin/env python3
"""Reference outputs for ZRFilterTests: every filter type evaluated straight from its formulas, one sample at a time,
independently of the library. Python computes in double; a float operation is done in double and rounded to float,
which gives the correctly rounded float result for +, -, x and / (double has more than twice float's precision).
cosf and sinf come from the C library, as in the library. Prints, per filter, the CRC-32 of the 512 output floats
(little-endian) and three samples as hexadecimal float literals."""
import ctypes
import math
import struct
import zlib

libm = ctypes.CDLL("libm.so.6")
for name in ("cosf", "sinf"):
    getattr(libm, name).restype = ctypes.c_float
    getattr(libm, name).argtypes = [ctypes.c_float]


def f(x):
    return struct.unpack("<f", struct.pack("<f", x))[0]


def signal():
    """512 samples: 256 of noise in [-0.5, 0.5), 128 of silence, 128 of a square wave of 0.9 with a period of 16."""
    state, samples = 12345, []
    for _ in range(256):
        state = (state * 1664525 + 1013904223) % 2**32
        samples.append(((state >> 8) - 2**23) * 2.0**-24)
    samples += [0.0] * 128
    samples += [f(0.9) if (n // 8) % 2 == 0 else f(-0.9) for n in range(128)]
    return samples


def biquad(kind, fs, freq, bw):
    w0 = f(freq * 6.283185307179586 / fs)
    cs, sn = libm.cosf(w0), libm.sinf(w0)
    alpha = f(sn * math.sinh(bw * 0.34657359027997264 * w0 / sn))
    a0 = f(alpha + 1.0)
    c3, c4 = f(f(-2.0 * cs) / a0), f(f(1.0 - alpha) / a0)
    if kind == "lowpass":
        c = [f(f(f(1.0 - cs) * 0.5) / a0), f(f(1.0 - cs) / a0), None]
    elif kind == "highpass":
        c = [f(f(f(1.0 + cs) * 0.5) / a0), f(-f(1.0 + cs) / a0), None]
    else:
        c = [f(alpha / a0), 0.0, f(-alpha / a0)]
    c0, c1, c2 = c[0], c[1], c[2] if c[2] is not None else c[0]

    def run(samples):
        x1 = x2 = y1 = y2 = 0.0
        out = []
        for s in samples:
            y = f(f(f(f(f(s * c0) + f(x1 * c1)) + f(x2 * c2)) - f(y1 * c3)) - f(y2 * c4))
            x2, x1, y2, y1 = x1, s, y1, y
            out.append(y)
        return out

    return run


def section(freq, fs):
    k = freq / fs
    w = f(k * 6.283185307179586)
    return f(w * (k * -3.0 + 1.0)), w


def weighting(kind, fs):
    d = 2.0**-20
    ch = f(math.exp(fs / 100000.0 * -1.3003) * 1.0531 + 0.2527)
    c20, w1 = section(20.599, fs)
    g1 = f(4.0 / f(f(2.0 - w1) * f(2.0 - w1)))
    boost = lambda w: f(2.0 / f(2.0 - w))
    if kind == "A":
        c1, w2 = section(107.652, fs)
        c2, w3 = section(737.862, fs)
        gain = f(boost(w3) * (boost(w2) * g1) * 1.25)
    elif kind == "B":
        c1, w2 = section(158.502, fs)
        gain = f(boost(w2) * g1 * 1.015)
    else:
        gain = f(g1 * 1.007)

    def high(state, x, c):
        state = f(f(f(f(x - state) + d) * c) + state)
        return state, f(x - state)

    def low(state, x, c):
        return f(f(f(x - state) * c) + state)

    def mix(p, h):
        return f(f(p * 0.25) + h * 0.75)

    def run(samples):
        h = [0.0] * 6
        out = []
        for s in samples:
            h[0], t1 = high(h[0], s, c20)
            h[1], t2 = high(h[1], t1, c20)
            if kind == "A":
                h[4] = low(h[4], t2, ch)
                p, h[5] = h[5], low(h[5], h[4], ch)
                h[2], t3 = high(h[2], mix(p, h[5]), c1)
                h[3], t4 = high(h[3], t3, c2)
                out.append(f(t4 * gain))
            elif kind == "B":
                h[3] = low(h[3], t2, ch)
                p, h[4] = h[4], low(h[4], h[3], ch)
                h[2], t3 = high(h[2], mix(p, h[4]), c1)
                out.append(f(t3 * gain))
            else:
                h[2] = low(h[2], t2, ch)
                p, h[3] = h[3], low(h[3], h[2], ch)
                out.append(f(mix(p, h[3]) * gain))
        return out

    return run


def dc(fs):
    c0 = f(-126.0 / fs + 1.0)

    def run(samples):
        x1 = y1 = 0.0
        out = []
        for s in samples:
            y = f(f(s - x1) + f(c0 * y1))
            x1, y1 = s, y
            out.append(y)
        return out

    return run


filters = [
    ("Lowpass, 1000 Hz, 2 octaves, 48000 Hz", biquad("lowpass", 48000.0, 1000.0, 2.0)),
    ("Highpass, 250 Hz, 1 octave, 44100 Hz", biquad("highpass", 44100.0, 250.0, 1.0)),
    ("Bandpass, 3000 Hz, 0.5 octaves, 96000 Hz", biquad("bandpass", 96000.0, 3000.0, 0.5)),
    ("A-weighted, 48000 Hz", weighting("A", 48000.0)),
    ("C-weighted, 96000 Hz", weighting("C", 96000.0)),
    ("B-weighted, 44100 Hz", weighting("B", 44100.0)),
    ("DC, 44100 Hz", dc(44100.0)),
]

for title, run in filters:
    out = run(signal())
    crc = zlib.crc32(struct.pack("<512f", *out))
    print(f"{title}: crc 0x{crc:08x}, [1] {out[1].hex()}, [300] {out[300].hex()}, [511] {out[511].hex()}")

# Silence from a fresh weighting filter at 48000 Hz: what the offset alone makes of it.
for kind in "ACB":
    out = weighting(kind, 48000.0)([0.0] * 64)
    crc = zlib.crc32(struct.pack("<64f", *out))
    print(f"{kind}-weighted silence: crc 0x{crc:08x}, [0] {out[0].hex()}, [1] {out[1].hex()}, [63] {out[63].hex()}")
