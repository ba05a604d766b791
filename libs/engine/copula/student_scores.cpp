#include "engine/copula/student_scores.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "engine/copula/likelihood.h"
#include "engine/copula/special_functions.h"

namespace Tessel::Engine::Copula {

namespace {

constexpr std::size_t kNumIntervals = 1024;
constexpr std::size_t kWorthInterpolating = 4 * kNumIntervals;

/// x(z): the quantile of Student's distribution where the standard normal one has the quantile z >= 0.
struct Node {
    double x, slope, curvature;
};

Node nodeAt(const StudentsT& student, double z) {
    const double nu = student.degrees_of_freedom();
    const double x = z == 0.0 ? 0.0 : -boost::math::quantile(student, normalProbability(-z));
    const double normalDensity = std::exp(-0.5 * z * z) / std::sqrt(2.0 * std::numbers::pi);
    const double slope = normalDensity / boost::math::pdf(student, x);
    return {x, slope, slope * (slope * (nu + 1.0) * x / (nu + x * x) - z)};
}

/// The polynomial of degree 5 that agrees with both nodes, `t` of the way from one to the other.
double hermite(const Node& a, const Node& b, double width, double t) {
    const double p1 = a.slope * width, q1 = b.slope * width;
    const double p2 = 0.5 * a.curvature * width * width, q2 = 0.5 * b.curvature * width * width;
    // What is left of x, x' and x'' / 2 at b after the parabola of a:
    const double c0 = b.x - a.x - p1 - p2, c1 = q1 - p1 - 2.0 * p2, c2 = q2 - p2;
    const double t3 = 10.0 * c0 - 4.0 * c1 + c2, t4 = -15.0 * c0 + 7.0 * c1 - 2.0 * c2,
                 t5 = 6.0 * c0 - 3.0 * c1 + c2;
    return a.x + t * (p1 + t * (p2 + t * (t3 + t * (t4 + t * t5))));
}

}  // namespace

StudentScores::StudentScores(const Ranks& ranks) : ranks_(ranks) {
    if (ranks.twiceRanks.size() >= kWorthInterpolating) tabulate(ranks, normalQuantile, normal_);
}

std::vector<double> StudentScores::at(double degreesOfFreedom) const {
    const StudentsT student(degreesOfFreedom);
    std::vector<double> scores;
    if (normal_.empty()) {
        tabulate(
            ranks_, [&](double u) { return boost::math::quantile(student, u); }, scores);
        return scores;
    }
    const double width = std::max(-normal_.front(), normal_.back()) / kNumIntervals;
    std::vector<Node> nodes(kNumIntervals + 1);
    IO::forEachIndex(nodes.size(), 100 * nodes.size(),
                     [&](std::size_t k) { nodes[k] = nodeAt(student, static_cast<double>(k) * width); });
    scores.resize(normal_.size());
    constexpr std::size_t kChunk = 4096;
    IO::forEachIndex((scores.size() + kChunk - 1) / kChunk, 8 * scores.size(), [&](std::size_t chunk) {
        for (std::size_t code = chunk * kChunk; code < std::min(scores.size(), (chunk + 1) * kChunk);
             ++code) {
            const double place = std::abs(normal_[code]) / width;
            const std::size_t below = std::min(static_cast<std::size_t>(place), kNumIntervals - 1);
            const double score =
                hermite(nodes[below], nodes[below + 1], width, place - static_cast<double>(below));
            scores[code] = std::copysign(score, normal_[code]);
        }
    });
    return scores;
}

}  // namespace Tessel::Engine::Copula
