// SPDX-License-Identifier: MIT
#include "kernels/resampling_filters.h"

#include <cmath>
#include <iterator>

#include "framework/math/elementary.h"
#include "kernels/math_rows.h"

namespace kfx {
namespace {

constexpr double kPi = 3.14159265358979323846;

double Sinc(double t) { return t == 0 ? 1 : Sin(kPi * t) / (kPi * t); }

double BlackmanWindow(double t) { return 0.42 + 0.5 * Cos(kPi * t) + 0.08 * Cos(2 * kPi * t); }

double Box(double x, double) { return std::fabs(x) <= 0.5 ? 1 : 0; }

double Triangle(double x, double) { return std::fabs(x) < 1 ? 1 - std::fabs(x) : 0; }

double Hermite(double x, double) {
    const double a = std::fabs(x);
    return a < 1 ? (2 * a - 3) * a * a + 1 : 0;
}

double Hann(double x, double) { return std::fabs(x) < 1 ? 0.5 + 0.5 * Cos(kPi * x) : 0; }

double Hamming(double x, double) { return std::fabs(x) < 1 ? 0.54 + 0.46 * Cos(kPi * x) : 0; }

double Blackman(double x, double) { return std::fabs(x) < 1 ? BlackmanWindow(x) : 0; }

double Gaussian(double x, double) { return Exp(-2 * x * x) * std::sqrt(2 / kPi); }

double QuadraticBSpline(double x, double) {
    const double a = std::fabs(x);
    if (a < 0.5) return 0.75 - a * a;
    return a < 1.5 ? 0.5 * (a - 1.5) * (a - 1.5) : 0;
}

// The family of cubics of Mitchell and Netravali ("Reconstruction Filters in Computer Graphics", SIGGRAPH
// 1988).
double Cubic(double x, double b, double c) {
    const double a = std::fabs(x);
    if (a < 1) return ((12 - 9 * b - 6 * c) * a * a * a + (-18 + 12 * b + 6 * c) * a * a + (6 - 2 * b)) / 6;
    if (a < 2)
        return ((-b - 6 * c) * a * a * a + (6 * b + 30 * c) * a * a + (-12 * b - 48 * c) * a +
                (8 * b + 24 * c)) /
               6;
    return 0;
}

double CubicBSpline(double x, double) { return Cubic(x, 1, 0); }

double CatmullRom(double x, double) { return Cubic(x, 0, 0.5); }

// B = C = 1/3, multiplied out.
double Mitchell(double x, double) {
    const double a = std::fabs(x);
    if (a < 1) return 7.0 / 6 * a * a * a - 2 * a * a + 8.0 / 9;
    if (a < 2) return -7.0 / 18 * a * a * a + 2 * a * a - 10.0 / 3 * a + 16.0 / 9;
    return 0;
}

double Lanczos(double x, double support) { return std::fabs(x) < support ? Sinc(x) * Sinc(x / support) : 0; }

// Each Sinc() with its operations in their order.
void LanczosPlaces(const double* x, double support, int32_t count, double* weights) {
    double angles[2 * kMostPlaces] = {}, sines[2 * kMostPlaces];
    for (int32_t i = 0; i < count; ++i) {
        angles[2 * i] = kPi * x[i];
        angles[2 * i + 1] = kPi * (x[i] / support);
    }
    SinRow(angles, 2 * count, sines);
    for (int32_t i = 0; i < count; ++i) {
        const double narrow = x[i] == 0 ? 1 : sines[2 * i] / angles[2 * i];
        const double wide = x[i] / support == 0 ? 1 : sines[2 * i + 1] / angles[2 * i + 1];
        weights[i] = std::fabs(x[i]) < support ? narrow * wide : 0;
    }
}

// The Bessel function of the first kind of order 1 by Bessel's integral, which the midpoint rule computes to
// full precision in a few dozen steps, because the integrand is periodic.
double BesselJ1(double x) {
    constexpr int kSteps = 64;
    double sum = 0;
    for (int i = 0; i < kSteps; ++i) {
        const double angle = kPi * (i + 0.5) / kSteps;
        sum += Cos(angle - x * Sin(angle));
    }
    return sum / kSteps;
}

double WindowedBessel(double x, double support) {
    if (std::fabs(x) >= support) return 0;
    const double jinc = x == 0 ? kPi / 4 : BesselJ1(kPi * x) / (2 * x);
    return BlackmanWindow(x / support) * jinc;
}

double WindowedSinc(double x, double support) {
    return std::fabs(x) < support ? BlackmanWindow(x / support) * Sinc(x) : 0;
}

constexpr ResamplingFilter kFilters[] = {
    {.name = "default", .weight = Box, .support = 0, .weights = nullptr},
    {.name = "point", .weight = Box, .support = 0, .weights = nullptr},
    {.name = "box", .weight = Box, .support = 0.5, .weights = nullptr},
    {.name = "triangle", .weight = Triangle, .support = 1, .weights = nullptr},
    {.name = "Hermite", .weight = Hermite, .support = 1, .weights = nullptr},
    {.name = "Hann", .weight = Hann, .support = 1, .weights = nullptr},
    {.name = "Hamming", .weight = Hamming, .support = 1, .weights = nullptr},
    {.name = "Blackman", .weight = Blackman, .support = 1, .weights = nullptr},
    {.name = "Gaussian", .weight = Gaussian, .support = 1.25, .weights = nullptr},
    {.name = "quadratic B-spline", .weight = QuadraticBSpline, .support = 1.5, .weights = nullptr},
    {.name = "cubic B-spline", .weight = CubicBSpline, .support = 2, .weights = nullptr},
    {.name = "Catmull-Rom", .weight = CatmullRom, .support = 2, .weights = nullptr},
    {.name = "Mitchell-Netravali", .weight = Mitchell, .support = 2, .weights = nullptr},
    {.name = "Lanczos", .weight = Lanczos, .support = 3, .weights = LanczosPlaces},
    {.name = "windowed Bessel", .weight = WindowedBessel, .support = 3.2383, .weights = nullptr},
    {.name = "windowed sinc", .weight = WindowedSinc, .support = 4, .weights = nullptr},
};

}  // namespace

const ResamplingFilter& FilterAt(size_t index) { return kFilters[index]; }

void WeighPlaces(const ResamplingFilter& filter, const double* x, int32_t count, double* weights) {
    if (filter.weights) return filter.weights(x, filter.support, count, weights);
    for (int32_t i = 0; i < count; ++i) weights[i] = filter.weight(x[i], filter.support);
}

size_t FilterCount() { return std::size(kFilters); }

}  // namespace kfx
