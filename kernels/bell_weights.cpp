// SPDX-License-Identifier: MIT
#include "kernels/bell_weights.h"

#include <algorithm>

#include "kernels/math_rows.h"

namespace kfx {

void BuildBlurWeights(int32_t n, float sigma, float* weights) {
    const int32_t reach = 3 * n / 2;
    for (int32_t i = 0; i < n; ++i) weights[i] = 0;
    // With an even n there is one sample more than three for each weight; it is dropped.
    constexpr int32_t kSamples = 48;
    double samples[kSamples];
    for (int32_t first = 0; first < 3 * n; first += kSamples) {
        const int32_t end = std::min(first + kSamples, 3 * n);
        for (int32_t k = first; k < end; ++k) {
            const double t = k - reach;
            samples[k - first] = -(t * t) / (sigma * 18.0 * sigma);
        }
        ExpRow(samples, end - first, samples);
        for (int32_t k = first; k < end; ++k)
            weights[k / 3] = static_cast<float>(weights[k / 3] + samples[k - first]);
    }
    float sum = 0;
    for (int32_t i = 0; i < n; ++i) sum += weights[i];
    for (int32_t i = 0; i < n; ++i) weights[i] /= sum;
}

void BuildMotionWeights(int32_t count, double sigma, double* weights) {
    for (int32_t i = 0; i < count; ++i) weights[i] = 0;
    constexpr int32_t kSamples = 48;
    double samples[kSamples];
    for (int32_t first = 0; first < 3 * count; first += kSamples) {
        const int32_t end = std::min(first + kSamples, 3 * count);
        for (int32_t j = first; j < end; ++j)
            samples[j - first] = -(static_cast<double>(j) * j) / (18.0 * (sigma * sigma));
        ExpRow(samples, end - first, samples);
        for (int32_t j = first; j < end; ++j) weights[j / 3] += samples[j - first];
    }
    double sum = 0;
    for (int32_t i = 0; i < count; ++i) sum += weights[i];
    for (int32_t i = 0; i < count; ++i) weights[i] /= sum;
}

}  // namespace kfx
