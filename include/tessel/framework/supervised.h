#pragma once

#include <memory>

#include <tessel/data/data_frame.h>
#include <tessel/framework/capabilities.h>
#include <tessel/framework/json_model.h>
#include <tessel/framework/ladon.h>
#include <tessel/framework/pmml.h>

// Learning with a target: what classifiers and regressors have in common, and how each kind is fitted and
// used.

namespace Tessel {

/// Where the prior probabilities of the classes come from.
enum class PriorProbMethodType : int {
    EMPIRICAL = 0,  ///< the shares of the classes in the training data
    UNIFORM = 1,    ///< the same for every class
    EXPLICIT = 2    ///< given class by class
};

/// The display name: "Empirical", "Uniform" or "Explicit".
TESSEL_API WString getPriorProbMethodTypeName(PriorProbMethodType method);

namespace Supervised {

/// Can check its parameters against training data.
class TESSEL_API Validatable : public Tessel::Validatable {
 public:
    using Tessel::Validatable::isValid;
    using Tessel::Validatable::validate;
    /// Throws the error of the first rule that parameters or data violate.
    virtual void validate(const DataFrame& features, const DataFrameColumn& target) const = 0;
    /// True when `validate` with the same arguments throws nothing; never throws.
    bool isValid(const DataFrame& features, const DataFrameColumn& target) const noexcept;
};

/// Predicts the target of new rows.
class TESSEL_API Scorable {
 public:
    virtual ~Scorable();
    /// A one-column table with a row per row of `features`. The columns that the model was trained on are
    /// found by name; others are ignored. @throws NotAValidColName for one that is missing.
    virtual DataFrame predict(const DataFrame& features) const = 0;
};

/// Everything that a fitted model with a target offers, whatever its kind. It scores from any number of
/// threads at once; its setters and importers need it for themselves.
class TESSEL_API Modelable : public Identifiable,
                             public ModelNameIdentifiable,
                             public virtual Scorable,
                             public DataFrameVectorExportable,
                             public JSONModel::Exportable,
                             public JSONModel::Importable,
                             public PMML::Exportable,
                             public PMML::Importable,
                             public Ladon::Exportable,
                             public Ladon::Importable,
                             public StringExportable {
 public:
    /// Columns that the model was trained on, without index columns.
    virtual StringVector getColNames() const = 0;
    virtual StringVector getIndexColNames() const = 0;
    virtual const WString& getTargetColName() const = 0;
    /// The scaling that a model which was read from a text applies to its inputs itself; after a fit no
    /// column is scaled.
    virtual const PMML::ColumnScaling& getInputScaling() const = 0;
};

/// The only column of a target given as a table. @throws NumColumnsMismatch
TESSEL_API DataFrameColumn targetColumn(const DataFrame& target);

/// Learns from features and a target. An estimator keeps no data: each fit gives a new, independent model.
template <class Model>
class Fitable {
 public:
    virtual ~Fitable() = default;
    /// @param features  index columns are not features. @param target  a row per row of `features`.
    virtual Model fit(const DataFrame& features, const DataFrameColumn& target) const = 0;
    /// The target as a one-column table. @throws NumColumnsMismatch
    Model fit(const DataFrame& features, const DataFrame& target) const {
        return fit(features, targetColumn(target));
    }
};

namespace Classification {

/// Classes with prior probabilities, and with two classes the rule that chooses between them: the success
/// class is predicted when its posterior probability is at least the success probability (the cut-off).
class TESSEL_API Classifiable {
 public:
    virtual ~Classifiable();
    /// A row per class, one column of probabilities.
    virtual DataFrame priorProbability() const = 0;
    /// @throws InvalidSuccessLabel when the model knows no such class.
    Classifiable& setSuccessClass(const WString& label) {
        assignSuccessClass(label);
        return *this;
    }
    /// The success class; empty when none was set and there are more than two classes.
    virtual const WString& getSuccessClass() const = 0;
    /// @throws ValueOutOfRange outside [0, 1].
    Classifiable& setSuccessProbability(double cutOff) {
        assignSuccessProbability(cutOff);
        return *this;
    }
    virtual double getSuccessProbability() const = 0;

 private:
    virtual void assignSuccessClass(const WString& label) = 0;
    virtual void assignSuccessProbability(double cutOff) = 0;
};

/// Predicts classes and their probabilities.
class TESSEL_API Scorable : public virtual Supervised::Scorable, public Classifiable {
 public:
    /// A column per class, "Posterior Probability: " and the class, in the order of the class list; each row
    /// sums to 1.
    virtual DataFrame posteriorProbability(const DataFrame& features) const = 0;
};

/// Everything that a fitted classifier offers.
class TESSEL_API Modelable : public Supervised::Modelable, public Scorable {
 public:
    /// The class labels, in the order of the posterior columns.
    virtual const StringVector& getClasses() const = 0;
    /// The column of `predict` followed by the columns of `posteriorProbability`.
    virtual DataFrame predictWithPosterior(const DataFrame& features) const = 0;
};

/// Takes the prior probabilities of the classes.
class TESSEL_API PriorProbsAdmissible {
 public:
    virtual ~PriorProbsAdmissible();
    PriorProbsAdmissible& setPriorProbMethod(PriorProbMethodType method) {
        assignPriorProbMethod(method);
        return *this;
    }
    virtual PriorProbMethodType getPriorProbMethod() const = 0;
    /// Gives one class its prior and makes the method EXPLICIT. In the end every class of the target needs a
    /// prior in [0, 1], and they must sum to 1.
    PriorProbsAdmissible& setPriorProb(const WString& classLabel, double probability) {
        assignPriorProb(classLabel, probability);
        return *this;
    }
    /// @throws NotASetMember when the class was given no prior.
    virtual double getPriorProb(const WString& classLabel) const = 0;

 private:
    virtual void assignPriorProbMethod(PriorProbMethodType method) = 0;
    virtual void assignPriorProb(const WString& classLabel, double probability) = 0;
};

}  // namespace Classification

namespace Regression {

/// Everything that a fitted regressor offers.
class TESSEL_API Modelable : public Supervised::Modelable {};

}  // namespace Regression
}  // namespace Supervised
}  // namespace Tessel
