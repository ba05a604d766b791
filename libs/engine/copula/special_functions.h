#pragma once

#include <algorithm>
#include <cmath>

#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>

namespace Tessel::Engine::Copula {

namespace Policies = boost::math::policies;

/// Boost.Math in double precision; what is outside a domain gives NaN, not an exception.
using MathPolicy = Policies::policy<
    Policies::promote_double<false>, Policies::domain_error<Policies::ignore_error>,
    Policies::pole_error<Policies::ignore_error>, Policies::overflow_error<Policies::ignore_error>,
    Policies::evaluation_error<Policies::ignore_error>, Policies::rounding_error<Policies::ignore_error>>;

inline double normalQuantile(double p) {
    return -1.4142135623730950488 * boost::math::erfc_inv(2.0 * p, MathPolicy());
}
inline double normalProbability(double x) {
    return 0.5 * boost::math::erfc(-0.70710678118654752440 * x, MathPolicy());
}

using StudentsT = boost::math::students_t_distribution<double, MathPolicy>;

/// The number within (0, 1), also where a computation ended on its border.
inline double strictlyInside(double u) { return std::clamp(u, 0x1p-54, 1.0 - 0x1p-53); }

}  // namespace Tessel::Engine::Copula
