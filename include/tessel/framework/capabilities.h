#pragma once

#include <tessel/data/interfaces.h>
#include <tessel/data/vectors.h>

// What estimators and models can be asked for, whatever their algorithm. The interfaces hold no state. Their
// setters call a private virtual function, so that families can hide them by setters that return the family's
// own class and chain.

namespace Tessel {

/// Has the name of the kind of model beside its own name.
class TESSEL_API ModelNameIdentifiable {
 public:
    virtual ~ModelNameIdentifiable();
    virtual const WString& getModelName() const = 0;
    ModelNameIdentifiable& setModelName(const WString& modelName) {
        assignModelName(modelName);
        return *this;
    }

 private:
    virtual void assignModelName(const WString& modelName) = 0;
};

/// Can check its own parameters.
class TESSEL_API Validatable {
 public:
    virtual ~Validatable();
    /// Throws the error of the first violated rule.
    virtual void validate() const = 0;
    /// True when `validate` throws nothing; never throws.
    bool isValid() const noexcept;
};

/// Turns a table into another one.
class TESSEL_API Transformable {
 public:
    virtual ~Transformable();
    virtual DataFrame transform(const DataFrame& table) const = 0;
    virtual StringVector getColNames() const = 0;
    virtual StringVector getIndexColNames() const = 0;
    virtual WString toJSON() const = 0;
    virtual WString toPMML() const = 0;
    virtual WString toLadon() const = 0;
    virtual void fromLadonString(const WString& text) = 0;
};

/// Continues a time series.
class TESSEL_API Forecastable {
 public:
    virtual ~Forecastable();
    virtual DataFrame forecast(const DataFrame& series) const = 0;
};

/// Takes observation weights: one positive number per row of the training data, or none at all.
class TESSEL_API WeightsAdmissible {
 public:
    virtual ~WeightsAdmissible();
    WeightsAdmissible& setWeights(const Vector& weights) {
        assignWeights(weights);
        return *this;
    }
    virtual const Vector& getWeights() const = 0;

 private:
    virtual void assignWeights(const Vector& weights) = 0;
};

namespace CategoricalVariables {

/// Tells which features are categorical.
class TESSEL_API Retrievable {
 public:
    virtual ~Retrievable();
    virtual const StringVector& getCategoricalFeaturesNames() const = 0;
    virtual const IntVector& getCategoricalFeaturesOffsets() const = 0;
    /// A row per categorical feature.
    virtual DataFrame getCategoricalFeaturesInfo() const = 0;
};

/// Lets numeric features be treated as categories, by name or by position among the features; text
/// columns are categorical by themselves. Names and positions add up.
class TESSEL_API Admissible : public Retrievable {
 public:
    Admissible& setCategoricalFeaturesNames(const StringVector& names) {
        assignCategoricalFeaturesNames(names);
        return *this;
    }
    Admissible& setCategoricalFeaturesOffsets(const IntVector& offsets) {
        assignCategoricalFeaturesOffsets(offsets);
        return *this;
    }

 private:
    virtual void assignCategoricalFeaturesNames(const StringVector& names) = 0;
    virtual void assignCategoricalFeaturesOffsets(const IntVector& offsets) = 0;
};

}  // namespace CategoricalVariables
}  // namespace Tessel
