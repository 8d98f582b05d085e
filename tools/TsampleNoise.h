#pragma once

#include <QString>

#include <cstdint>

// Deterministic randomness for the sample library: the same seed gives the same pictures on
// every run and every machine, so a rebuild changes nothing that did not change.
class TsampleNoise
{
public:
    explicit TsampleNoise(std::uint32_t seed);
    // A seed from a name (FNV-1a over its UTF-8), so every sample draws its own numbers.
    static std::uint32_t seedOf(const QString& name);

    // Uniform in [0, 1).
    double next();
    double range(double low, double high) { return low + (high - low) * next(); }
    int below(int count) { return int(next() * count) % count; }

    // Smooth value noise in [0, 1] over the plane, with period-free lattice hashing, and its
    // sum over octaves (each twice the frequency and half the weight of the one before).
    double value(double x, double y) const;
    double fractal(double x, double y, int octaves) const;

private:
    double lattice(int x, int y) const;

    std::uint32_t m_seed;
    std::uint64_t m_state;
};
