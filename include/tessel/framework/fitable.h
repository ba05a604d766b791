#pragma once

#include <tessel/data/data_frame.h>

// How estimators without a target are fitted; the form with a target stands in supervised.h. Each fit gives a
// new, independent model.

namespace Tessel {

namespace Unsupervised {

/// Learns from a table.
template <class Model>
class Fitable {
 public:
    virtual ~Fitable() = default;
    virtual Model fit(const DataFrame& table) const = 0;
};

}  // namespace Unsupervised

namespace TimeSeries {

/// Learns from an equally spaced series, given as a column or as the only numeric column of a table.
template <class Model>
class Fitable {
 public:
    virtual ~Fitable() = default;
    virtual Model fit(const DataFrame& series) const = 0;
    virtual Model fit(const DataFrameColumn& series) const = 0;
    /// Fits and continues the same series.
    virtual DataFrame fitForecast(const DataFrame& series) const = 0;
    virtual DataFrame fitForecast(const DataFrameColumn& series) const = 0;
};

}  // namespace TimeSeries

namespace Univariate {

/// Learns from one column, given as such or as a one-column table.
template <class Model>
class Fitable {
 public:
    virtual ~Fitable() = default;
    virtual Model fit(const DataFrame& table) const = 0;
    virtual Model fit(const DataFrameColumn& column) const = 0;
    /// Fits and transforms the same data.
    virtual DataFrame fitTransform(const DataFrame& table) const = 0;
    virtual DataFrame fitTransform(const DataFrameColumn& column) const = 0;
};

}  // namespace Univariate

namespace Transformation {

/// Fits a transformation and applies it to the same data.
template <class Model>
class Fitable {
 public:
    virtual ~Fitable() = default;
    virtual DataFrame fitTransform(const DataFrame& table) const = 0;
    virtual DataFrame fitTransform(const DataFrameColumn& column) const = 0;
};

/// The same for binning, with the number of rows in each bin.
template <class Model>
class CountFitable : public Fitable<Model> {
 public:
    virtual DataFrame fitCount(const DataFrame& table) const = 0;
    virtual DataFrame fitCount(const DataFrameColumn& column) const = 0;
};

}  // namespace Transformation
}  // namespace Tessel
