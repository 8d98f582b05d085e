#include "TsampleNoise.h"

#include <cmath>

TsampleNoise::TsampleNoise(std::uint32_t seed)
    : m_seed(seed)
    , m_state(0x9E3779B97F4A7C15ull ^ seed)
{
}

std::uint32_t TsampleNoise::seedOf(const QString& name)
{
    std::uint32_t hash = 2166136261u;
    for (const char c : name.toUtf8()) {
        hash ^= std::uint8_t(c);
        hash *= 16777619u;
    }
    return hash;
}

double TsampleNoise::next()
{
    // splitmix64: small, fast and well spread.
    std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    z ^= z >> 31;
    return double(z >> 11) * (1.0 / 9007199254740992.0);
}

double TsampleNoise::lattice(int x, int y) const
{
    std::uint32_t h = m_seed ^ (std::uint32_t(x) * 374761393u) ^ (std::uint32_t(y) * 668265263u);
    h = (h ^ (h >> 13)) * 1274126177u;
    h ^= h >> 16;
    return double(h & 0xFFFFFF) / double(0xFFFFFF);
}

double TsampleNoise::value(double x, double y) const
{
    const double fx = std::floor(x);
    const double fy = std::floor(y);
    const int ix = int(fx);
    const int iy = int(fy);
    double tx = x - fx;
    double ty = y - fy;
    tx = tx * tx * (3 - 2 * tx);
    ty = ty * ty * (3 - 2 * ty);
    const double a = lattice(ix, iy);
    const double b = lattice(ix + 1, iy);
    const double c = lattice(ix, iy + 1);
    const double d = lattice(ix + 1, iy + 1);
    return (a + (b - a) * tx) + ((c + (d - c) * tx) - (a + (b - a) * tx)) * ty;
}

double TsampleNoise::fractal(double x, double y, int octaves) const
{
    double sum = 0;
    double weight = 0.5;
    double total = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += value(x, y) * weight;
        total += weight;
        x *= 2.03;
        y *= 2.03;
        weight *= 0.5;
    }
    return sum / total;
}
