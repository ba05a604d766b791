#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "engine/copula/dependence.h"
#include "engine/random/uniform_sample.h"

namespace Tessel::Engine::Copula {

using Rows = std::vector<std::vector<double>>;

inline std::vector<std::span<const double>> constSpans(const Rows& rows) {
    return {rows.begin(), rows.end()};
}
inline std::vector<std::span<double>> spans(Rows& rows) { return {rows.begin(), rows.end()}; }

inline Rows uniforms(std::size_t numVars, std::size_t numRows,
                     Random::SamplingMethodType method = Random::SamplingMethodType::MONTE_CARLO) {
    Rows rows(numVars, std::vector<double>(numRows));
    auto generator = Random::RandomGenerator::create(Random::RandomGeneratorType::MERSENNE_TWISTER, 11, 1, 0);
    Random::uniformSample(*generator, method, spans(rows));
    return rows;
}

/// Swiss provinces of 1888 (R 4.2.2, datasets::swiss): -Fertility, -Agriculture, Examination, Education.
inline Rows swiss() {
    return {{-80.2, -83.1, -92.5, -85.8, -76.9, -76.1, -83.8, -92.4, -82.4, -82.9, -87.1, -64.1,
             -66.9, -68.9, -61.7, -68.3, -71.7, -55.7, -54.3, -65.1, -65.5, -65,   -56.6, -57.4,
             -72.5, -74.2, -72,   -60.5, -58.3, -65.4, -75.5, -69.3, -77.3, -70.5, -79.4, -65,
             -92.2, -79.3, -70.4, -65.7, -72.7, -64.4, -77.6, -67.6, -35,   -44.7, -42.8},
            {-17,   -45.1, -39.7, -36.5, -43.5, -35.3, -70.2, -67.8, -53.3, -45.2, -64.5, -62,
             -67.5, -60.7, -69.3, -72.6, -34,   -19.4, -15.2, -73,   -59.8, -55.1, -50.9, -54.1,
             -71.2, -58.1, -63.5, -60.8, -26.8, -49.5, -85.9, -84.9, -89.7, -78.2, -64.9, -75.9,
             -84.6, -63.1, -38.4, -7.7,  -16.7, -17.6, -37.6, -18.7, -1.2,  -46.6, -27.7},
            {15, 6,  5, 12, 17, 9,  16, 14, 12, 16, 14, 21, 14, 19, 22, 18, 17, 26, 31, 19, 22, 14, 22, 20,
             12, 14, 6, 16, 25, 15, 3,  7,  5,  12, 7,  9,  3,  13, 26, 29, 22, 35, 15, 25, 37, 16, 22},
            {12, 9, 5, 7,  15, 7, 7, 8, 7, 13, 6, 12, 7, 12, 5,  2,  8,  28, 20, 9, 10, 3,  12, 6,
             1,  8, 3, 10, 19, 8, 2, 6, 2, 6,  3, 9,  3, 13, 12, 11, 13, 32, 7,  7, 53, 29, 29}};
}

}  // namespace Tessel::Engine::Copula
