#pragma once

#include <tessel/data/types.h>

namespace Tessel::PMML {

/// What a document needs to know of a fitted scaler: which columns it changes, and the map
/// x -> (x - shift) * scale of each of them. A scaler model gives this view of itself.
class ColumnScaling {
 public:
    virtual ~ColumnScaling() = default;

    virtual bool isScaled(const WString& name) const = 0;
    /// Asked for scaled columns only.
    virtual double getShift(const WString& name) const = 0;
    virtual double getScale(const WString& name) const = 0;

 protected:
    ColumnScaling() = default;
    ColumnScaling(const ColumnScaling&) = default;
    ColumnScaling& operator=(const ColumnScaling&) = default;
};

}  // namespace Tessel::PMML
