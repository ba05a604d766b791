#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <limits>
#include <numbers>
#include <tuple>

#include "engine/dist/elementary.h"
#include "engine/dist/families.h"
#include "engine/dist/sample.h"

// How a family is written, and `FamilyDist` over it. Included by the sources of the families only.
//
//   struct Family {
//       static constexpr FamilyDescription kDescription;
//       explicit Family(const Parameters&);        // any numbers; computes what all questions share
//       bool isValid() const;                      // nothing below is called when it is false
//       Interval support() const;
//       double logPdf(double x) const;             // and pdf(x), where exp(logPdf(x)) is not the best way
//       double cdf(double x) const;
//       double complementaryCdf(double x) const;
//       double inverseCdf(double p) const;         // 0 < p < 1
//       Moments moments() const;
//       static Parameters fit(const Sample&, const Parameters& current);  // NaN where there is no estimate
//   };
//
// x is finite and in the support, and a whole number when the family is discrete. A discrete family may have
// `quantileGuess(p)` in the place of `inverseCdf`, or neither of them: the quantile is searched from there.
// It may have a `quickQuantile(p, quantileGuess(p))` too, without branches: the quantile, or NaN where only a
// search is sure of it. A family may have its cdf inside the support, or its `inverseCdf`, as a `Chain` too:
// `cdfChain()`, `quantileChain()`.

namespace Tessel::Engine::Dist {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr Interval kPositive{0.0, kInfinity};

struct Moments {
    double mean = kNaN;
    double variance = kNaN;
    double skewness = kNaN;
    double excessKurtosis = kNaN;
    double mode = kNaN;
};

/// The largest magnitude that parameters and locations may reach.
inline constexpr double kLargest = 1e300;

inline bool isPositive(double value) { return value > 0.0 && value <= kLargest; }
inline bool isProbability(double value) { return value >= 0.0 && value <= 1.0; }
/// The scale is positive and the bulk of the distribution, 6.4 scales to either side, has finite places.
inline bool isLocationScale(double location, double scale) {
    return std::isfinite(location) && std::isfinite(scale) && scale > 0.0 &&
           std::abs(location + 6.4 * scale) <= kLargest && std::abs(location - 6.4 * scale) <= kLargest;
}

/// Functions of one number, each to be applied to what the one before it gives. Many numbers take one step
/// after the other together: a processor overlaps the same short computation for several numbers, but hardly
/// a long one.
template <class... Steps>
class Chain {
 public:
    explicit Chain(Steps... steps) : steps_(steps...) {}

    template <class Step>
    auto then(Step step) const {
        return std::apply([&step](const Steps&... steps) { return Chain<Steps..., Step>(steps..., step); },
                          steps_);
    }

    double operator()(double x) const {
        std::apply([&x](const auto&... step) { ((x = step(x)), ...); }, steps_);
        return x;
    }
    /// `block` is overwritten; the last step goes to `result`.
    void operator()(std::span<double> block, double* result) const {
        std::size_t rest = sizeof...(Steps);
        const auto apply = [&](const auto& step) {
            double* const out = --rest == 0 ? result : block.data();
            for (std::size_t i = 0; i < block.size(); ++i) out[i] = step(block[i]);
        };
        std::apply([&apply](const auto&... step) { (apply(step), ...); }, steps_);
    }

 private:
    std::tuple<Steps...> steps_;
};

namespace Frame {

template <class Family>
double logPdf(const Family& family, double x) {
    if constexpr (requires { family.logPdf(x); })
        return family.logPdf(x);
    else
        return std::log(family.pdf(x));
}

template <class Family>
double pdf(const Family& family, double x) {
    if constexpr (requires { family.pdf(x); })
        return family.pdf(x);
    else
        return std::exp(family.logPdf(x));
}

/// The expansion of Cornish & Fisher to the skewness; a place to start a search from.
double cornishFisher(double mean, double variance, double skewness, double p);

template <class Family>
double quantileGuess(const Family& family, double p) {
    if constexpr (requires { family.quantileGuess(p); }) {
        return family.quantileGuess(p);
    } else {
        const Moments moments = family.moments();
        return cornishFisher(moments.mean, moments.variance, moments.skewness, p);
    }
}

/// The smallest whole x with cdf(x) >= p, by Newton's method on the logarithm of the nearer tail within what
/// is known to enclose it. Where Newton's method makes no headway, halves the enclosure, or doubles x while
/// there is no upper bound.
template <class Family>
double wholeQuantile(const Family& family, double p) {
    constexpr int kMaxNewtonSteps = 12;
    constexpr double kMargin = 1e-9;  // far more than the rounding of densities and chances
    const auto [lowest, highest] = family.support();
    const double guess = std::floor(quantileGuess(family, p));
    double x = guess >= lowest ? std::min(guess, highest) : lowest;
    double below = lowest - 1.0, above = highest;  // cdf(below) < p <= cdf(above)
    for (int count = 0;; ++count) {
        const double chance = family.cdf(x);
        const bool isReached = chance >= p;
        (isReached ? above : below) = x;
        if (above - below <= 1.0) return above;
        // The neighbour's chance follows from the density, unless it is too near p to tell.
        const double density = pdf(family, x);
        if (isReached && chance - density < p * (1.0 - kMargin)) return x;
        if (!isReached && chance + pdf(family, x + 1.0) > p * (1.0 + kMargin)) return x + 1.0;
        const double rest = 1.0 - chance;
        const double step =
            p < 0.5 ? std::log(p / chance) * chance / density : std::log(rest / (1.0 - p)) * rest / density;
        double next = std::floor(x + step);
        if (next == x) next += isReached ? -1.0 : 1.0;
        if (count >= kMaxNewtonSteps || !(next > below && next < above))
            next = above < kInfinity ? std::floor(below + 0.5 * (above - below)) : 2.0 * std::abs(x) + 1.0;
        if (!(next > below && next < above)) return above;  // neighbouring doubles
        x = next;
    }
}

template <class Family>
double inverseCdf(const Family& family, double p) {
    if constexpr (requires { family.inverseCdf(p); }) {
        return family.inverseCdf(p);
    } else {
        if constexpr (requires { family.quickQuantile(p, p); }) {
            const double quick = family.quickQuantile(p, family.quantileGuess(p));
            if (!std::isnan(quick)) return quick;
        }
        return wholeQuantile(family, p);
    }
}

/// The answers to many numbers, a block at a time. When all numbers of a block are plain, a loop without
/// cases gives them, in which compilers work on several numbers at once where the family allows it.
/// @param shift  taken off the numbers before `isPlain` and `plain` see them.
/// @param plain  a `Chain`, or what is called as one.
template <class IsPlain, class Plain, class Any>
void answerBlocks(std::span<const double> x, std::span<double> result, double shift, const IsPlain& isPlain,
                  const Plain& plain, const Any& any) {
    constexpr std::size_t kBlock = 256;
    std::array<double, kBlock> block;  // a copy, as `result` may be `x`
    for (std::size_t begin = 0; begin < x.size(); begin += kBlock) {
        const std::size_t count = std::min(kBlock, x.size() - begin);
        const double* const in = x.data() + begin;
        double* const out = result.data() + begin;
        for (std::size_t i = 0; i < count; ++i) block[i] = in[i] - shift;
        if (std::all_of(block.begin(), block.begin() + count, isPlain))
            plain(std::span(block).first(count), out);
        else
            for (std::size_t i = 0; i < count; ++i) out[i] = any(in[i]);
    }
}

/// A family at its place: what holds outside the support, between whole numbers, and under a shift.
template <class Family>
struct Placed {
    const Family& family;
    Interval support;
    double shift;
    static constexpr bool kIsContinuous = Family::kDescription.isContinuous;

    /// Strictly inside the support, and so a finite number: the one test that most values need.
    bool isInside(double y) const { return support.lower < y && y < support.upper; }
    bool isPossible(double y) const {
        return (isInside(y) || (support.contains(y) && std::isfinite(y))) &&
               (kIsContinuous || y == std::floor(y));
    }
    double pdf(double x) const {
        const double y = x - shift;
        if (isPossible(y)) return Frame::pdf(family, y);
        return std::isnan(y) ? kNaN : 0.0;
    }
    double logPdf(double x) const {
        const double y = x - shift;
        if (isPossible(y)) return Frame::logPdf(family, y);
        return std::isnan(y) ? kNaN : -kInfinity;
    }
    double cdf(double x) const {
        const double y = x - shift;
        if (!isInside(y)) {
            if (std::isnan(y)) return kNaN;
            if (y < support.lower || y == -kInfinity) return 0.0;
            if (y > support.upper || y == kInfinity) return 1.0;
        }
        return family.cdf(kIsContinuous ? y : std::floor(y));
    }
    double complementaryCdf(double x) const {
        const double y = x - shift;
        if (!isInside(y)) {
            if (std::isnan(y)) return kNaN;
            if (y < support.lower || y == -kInfinity) return 1.0;
            if (y > support.upper || y == kInfinity) return 0.0;
        }
        return family.complementaryCdf(kIsContinuous ? y : std::floor(y));
    }
    double inverseCdf(double p) const {
        if (!(p > 0.0 && p < 1.0))
            return p == 0.0 ? shift + support.lower : p == 1.0 ? shift + support.upper : kNaN;
        return place(Frame::inverseCdf(family, p));
    }
    /// x of a quantile of the family.
    double place(double y) const {
        const double atLeast = y < support.lower ? support.lower : y;
        return shift + (atLeast > support.upper ? support.upper : atLeast);
    }

    // The same for many numbers. The copies tell compilers that no result changes them.
    void pdfs(std::span<const double> x, std::span<double> result) const {
        std::transform(x.begin(), x.end(), result.begin(), [this](double value) { return pdf(value); });
    }
    void logPdfs(std::span<const double> x, std::span<double> result) const {
        std::transform(x.begin(), x.end(), result.begin(), [this](double value) { return logPdf(value); });
    }
    void cdfs(std::span<const double> x, std::span<double> result) const {
        const auto any = [this](double value) { return cdf(value); };
        if constexpr (requires { family.cdfChain(); })
            answerBlocks(x, result, shift, plainPlace(), family.cdfChain(), any);
        else
            answerBlocks(
                x, result, shift, plainPlace(),
                Chain([own = family](double y) { return own.cdf(kIsContinuous ? y : wholeBelow(y)); }), any);
    }
    void complementaryCdfs(std::span<const double> x, std::span<double> result) const {
        answerBlocks(x, result, shift, plainPlace(), Chain([own = family](double y) {
                         return own.complementaryCdf(kIsContinuous ? y : wholeBelow(y));
                     }),
                     [this](double value) { return complementaryCdf(value); });
    }
    void inverseCdfs(std::span<const double> p, std::span<double> result) const {
        const auto isPlain = [](double value) { return value > 0.0 && value < 1.0; };
        const auto any = [this](double value) { return inverseCdf(value); };
        const auto toPlace = [at = *this](double y) { return at.place(y); };
        if constexpr (requires { family.quantileChain(); }) {
            answerBlocks(p, result, 0.0, isPlain, family.quantileChain().then(toPlace), any);
        } else if constexpr (requires { family.quickQuantile(0.5, 0.0); }) {
            const auto plain = [this](std::span<double> block, double* out) {
                const auto own = family;  // copies, as above
                const auto at = *this;
                for (std::size_t i = 0; i < block.size(); ++i) out[i] = own.quantileGuess(block[i]);
                for (std::size_t i = 0; i < block.size(); ++i)
                    out[i] = at.place(own.quickQuantile(block[i], out[i]));
                for (std::size_t i = 0; i < block.size(); ++i)
                    if (std::isnan(out[i])) out[i] = at.place(Frame::wholeQuantile(own, block[i]));
            };
            answerBlocks(p, result, 0.0, isPlain, plain, any);
        } else {
            const auto quantile = [own = family](double value) { return Frame::inverseCdf(own, value); };
            answerBlocks(p, result, 0.0, isPlain, Chain(quantile).then(toPlace), any);
        }
    }
    auto plainPlace() const {
        constexpr double kMost = kIsContinuous ? kInfinity : kMostForWhole;
        return [lower = std::max(support.lower, -kMost), upper = std::min(support.upper, kMost)](double y) {
            return kIsContinuous ? lower < y && y < upper : lower <= y && y <= upper;
        };
    }
};

inline bool areWhole(std::span<const double> values, double shift) {
    return std::all_of(values.begin(), values.end(),
                       [shift](double value) { return value - shift == std::floor(value - shift); });
}

}  // namespace Frame

template <class Family>
FamilyDist<Family>::FamilyDist() {
    setDataDomain(Family::kDescription.dataDomain);
    Parameters defaults;
    for (std::size_t i = 0; i < kMaxParameters; ++i)
        defaults[i] = Family::kDescription.parameters[i].defaultValue;
    assign(defaults);
}

template <class Family>
const FamilyDescription& FamilyDist<Family>::description() {
    static constexpr FamilyDescription kDescription = Family::kDescription;
    return kDescription;
}

template <class Family>
bool FamilyDist<Family>::accepts(std::size_t numParameters) {
    constexpr std::size_t kNumShown = Family::kDescription.numParameters;
    return numParameters == kNumShown || numParameters == kNumShown + Family::kDescription.numHidden;
}

template <class Family>
void FamilyDist<Family>::assign(const Parameters& parameters) {
    constexpr FamilyDescription kFamily = Family::kDescription;
    auto family = std::make_shared<const Family>(parameters);
    setFamily(kFamily.code, kFamily.isContinuous, kFamily.isBoundedBelow);
    parameters_ = parameters;
    isAdmissible_ = family->isValid();
    setSupport(isAdmissible_ ? family->support() : Interval{});
    family_ = std::move(family);
}

template <class Family>
bool FamilyDist<Family>::setParameters(std::span<const double> parameters) {
    if (!accepts(parameters.size())) return false;
    Parameters all = parameters_;
    std::copy(parameters.begin(), parameters.end(), all.begin());
    for (std::size_t i = parameters.size(); i < kMaxParameters; ++i)
        all[i] = Family::kDescription.parameters[i].defaultValue;
    assign(all);
    return isValid();
}

template <class Family>
bool FamilyDist<Family>::isValid() const {
    return isAdmissible_ && std::isfinite(shift()) && support().lower <= support().upper;
}

template <class Family>
std::span<const double> FamilyDist<Family>::parameters() const {
    return std::span(parameters_).first(Family::kDescription.numParameters);
}

template <class Family>
std::wstring FamilyDist<Family>::formulaStart() const {
    return formulaStart(Family::kDescription.functionName, parameters());
}

template <class Family>
std::unique_ptr<CDist> FamilyDist<Family>::clone() const {
    return std::make_unique<FamilyDist>(*this);
}

template <class Family>
bool FamilyDist<Family>::fitData(std::size_t n, const double* values) {
    if (!isSampleAdmissible(n, values)) return false;
    const std::span<const double> sample(values, n);
    if (!Family::kDescription.isContinuous && !Frame::areWhole(sample, shift())) return false;
    assign(Family::fit(Sample(sample, shift()), parameters_));
    return isValid();
}

template <class Family>
double FamilyDist<Family>::mean() const {
    return isValid() ? shift() + family_->moments().mean : kNaN;
}
template <class Family>
double FamilyDist<Family>::variance() const {
    return isValid() ? family_->moments().variance : kNaN;
}
template <class Family>
double FamilyDist<Family>::skewness() const {
    return isValid() ? family_->moments().skewness : kNaN;
}
template <class Family>
double FamilyDist<Family>::excessKurtosis() const {
    return isValid() ? family_->moments().excessKurtosis : kNaN;
}
template <class Family>
double FamilyDist<Family>::mode() const {
    return isValid() ? shift() + family_->moments().mode : kNaN;
}

// The questions of one number and of many, from the functions of `Frame::Placed` of the same name.
#define TESSEL_QUESTION(NAME, NAMES)                                                             \
    template <class Family>                                                                      \
    double FamilyDist<Family>::NAME(double x) const {                                            \
        return isValid() ? Frame::Placed<Family>{*family_, support(), shift()}.NAME(x) : kNaN;   \
    }                                                                                            \
    template <class Family>                                                                      \
    void FamilyDist<Family>::NAMES(std::span<const double> x, std::span<double> result) const {  \
        assert(x.size() == result.size());                                                       \
        if (!isValid()) return static_cast<void>(std::fill(result.begin(), result.end(), kNaN)); \
        Frame::Placed<Family>{*family_, support(), shift()}.NAMES(x, result);                    \
    }
TESSEL_QUESTION(pdf, pdfs)
TESSEL_QUESTION(logPdf, logPdfs)
TESSEL_QUESTION(cdf, cdfs)
TESSEL_QUESTION(complementaryCdf, complementaryCdfs)
TESSEL_QUESTION(inverseCdf, inverseCdfs)
#undef TESSEL_QUESTION

}  // namespace Tessel::Engine::Dist
