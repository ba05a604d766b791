#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <vector>

// The metalog quantile function: a linear combination of powers of the probability y, taken from the middle,
// and of their products with its logit,
//
//   M(y) = A(x) + L B(x),   x = y - 1/2,   L = ln(y / (1 - y)),
//
// with polynomials A and B. The coefficients of both are the coefficients of the metalog, in an order of
// terms of its own. With bounds, M is a quantile function on the line of real numbers that the range is
// mapped to.
//
// Sources: T. Keelin, The Metalog Distributions, Decision Analysis 13(4) (2016) 243-277; M. Baucells,
// L. Chrisman, T. Keelin & S. Xu, On the Properties of the Metalog Distribution (2025) for the later order.
//
// The logit, not the probability, is the variable of all computations: it keeps full relative precision in
// both tails. The derivative dM/dL = B(x) + y (1 - y) (A'(x) + L B'(x)) is called the slope; the density at
// the quantile is y (1 - y) / slope, so that a metalog is a distribution exactly when its slope is positive
// everywhere.

namespace Tessel::Engine::Dist {

inline constexpr int kMinMetalogTerms = 2;
inline constexpr int kMaxMetalogTerms = 16;

/// The order in which terms enter. Both start with 1, L, x L, x, x^2, x^2 L.
enum class MetalogOrder {
    /// ..., x^3, x^3 L, x^4, x^4 L, x^5, x^5 L, x^6, x^6 L, x^7, x^7 L: the order of 2016.
    KEELIN_2016,
    /// The pairs with odd powers swapped: ..., x^3 L, x^3, x^4, x^4 L, x^5 L, x^5, x^6, x^6 L, x^7 L, x^7.
    /// Functions that are even in x and functions that are odd then alternate as they do among the first
    /// four,
    /// and k terms fit any k points; the order of 2016 has 7 terms of which 4 are odd, which on 7 points that
    /// lie symmetrically depend on each other.
    BAUCELLS_2025,
};

/// The basis function x^power, times L when hasLogit.
struct MetalogTerm {
    int power;
    bool hasLogit;

    /// Whether the function has the same values at x and -x; else they differ in sign.
    bool isEven() const { return (power % 2 == 1) == hasLogit; }
};

/// @param index  1 to 16.
MetalogTerm metalogTerm(MetalogOrder order, int index);

/// A polynomial of degree 7 at most; the coefficient of x^k is at k.
using MetalogPolynomial = std::array<double, 8>;

/// A probability y, with what is needed of it in both tails.
struct MetalogProbability {
    double logit;    ///< ln(y / (1 - y))
    double odds;     ///< exp(-|logit|)
    double x;        ///< y - 1/2
    double product;  ///< y (1 - y)

    static MetalogProbability ofLogit(double logit);
    /// @pre 0 < y < 1
    static MetalogProbability of(double y);
};

class MetalogCurve {
 public:
    MetalogCurve() = default;
    /// @param coefficients  2 to 16 of them; others make the curve M = 0.
    MetalogCurve(MetalogOrder order, std::span<const double> coefficients);

    const MetalogPolynomial& plain() const { return plain_; }    ///< A
    const MetalogPolynomial& logits() const { return logits_; }  ///< B
    /// B = 0: the curve ends at both sides.
    bool isPolynomial() const;

    /// M.
    double value(const MetalogProbability& y) const;
    /// dM/dL.
    double slope(const MetalogProbability& y) const;

    struct Point {
        double value;
        double slope;
        double curvature;  ///< d^2M / dL^2
    };
    Point point(const MetalogProbability& y) const;
    /// The points of several probabilities, the same bit for bit, evaluated side by side.
    template <std::size_t Size>
    std::array<Point, Size> points(const std::array<MetalogProbability, Size>& y) const;

    /// The limits of M for y = 0 and 1; infinite unless the curve is a polynomial.
    double limitAtZero() const;
    double limitAtOne() const;

 private:
    MetalogPolynomial plain_{};
    MetalogPolynomial logits_{};
    std::size_t degree_ = 0;  ///< Of the higher one.
};

/// Whether the slope is positive for every y in 0 < y < 1, proved and not sampled: false where a density that
/// is infinite somewhere, or finite everywhere by less than rounding can tell (1e-14 of the largest term).
///
/// The proof covers y by intervals. On each, the slope is a polynomial in x with the logit replaced by its
/// tangent, whose lower bound is that of its Taylor form (constant and linear part exact, the rest by its
/// absolute sum), less a bound on what the tangent misses and on rounding; where the bound is not positive
/// the interval is cut in two. Beyond some logit the slope is within a decreasing distance of B(1/2) or
/// B(-1/2). Cf. H. Ratschek & J. Rokne, Computer Methods for the Range of Functions (1984), ch. 3. About 10
/// microseconds.
bool isFeasible(const MetalogCurve& curve);

/// Maps the range between two bounds to the line of real numbers: x, ln(x - lower), -ln(upper - x) or
/// ln((x - lower) / (upper - x)). A bound that is not finite means unbounded on that side.
struct MetalogBounds {
    double lower = -std::numeric_limits<double>::infinity();
    double upper = std::numeric_limits<double>::infinity();

    bool hasLower() const;
    bool hasUpper() const;
    /// lower < upper and both of at most 1e300, where they are finite.
    bool areAdmissible() const;
    /// NaN or infinite for x outside the bounds.
    double toLine(double x) const;
    double fromLine(double z) const;
    /// ln of the derivative of toLine, at the x with toLine(x) = z.
    double logDerivative(double z) const;
};

/// The inverse of an increasing curve. Holds a table of it for good first guesses; about 3 microseconds to
/// make.
class MetalogInverse {
 public:
    MetalogInverse() = default;
    /// @pre isFeasible(curve)
    explicit MetalogInverse(const MetalogCurve& curve);

    struct Solution {
        double logit;  ///< Minus or plus infinity where even the smallest probability is too large.
        double odds;   ///< exp(-|logit|): the smaller of y and 1 - y is odds / (1 + odds).
        double slope;
    };
    /// The logit at which the curve has the value, by Halley's method within a shrinking bracket, to the
    /// precision of the value itself; NaN for NaN.
    Solution operator()(double value) const;
    /// The same for many values, faster when they ascend.
    void operator()(std::span<const double> values, std::span<Solution> result) const;

 private:
    /// A point of the curve, with the derivatives of the inverse there.
    struct Knot {
        double value;
        double logit;
        double first;
        double second;
    };
    /// Where the logit of a value is sought.
    struct Search {
        double guess, low, high;
    };
    Search searchFor(double value) const;
    Solution solve(double value, Search search) const;

    MetalogCurve curve_;
    std::vector<Knot> knots_;
};

/// Mean, variance, skewness and excess kurtosis.
struct MetalogMoments {
    double mean;
    double variance;
    double skewness;
    double excessKurtosis;
};

/// The moments of the distribution with a feasible curve, by quadrature over the logit to about 1e-13. With
/// one bound the tail on the other side is a power law: moments that diverge are infinite, and NaN where they
/// are standardised by one that does.
MetalogMoments momentsOf(const MetalogCurve& curve, const MetalogBounds& bounds);

}  // namespace Tessel::Engine::Dist
