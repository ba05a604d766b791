#pragma once

#include <memory>

#include <tessel/data/data_frame.h>
#include <tessel/data/data_frame_vector.h>
#include <tessel/framework/progress.h>

#include "framework/identifiable.h"
#include "framework/parameter.h"

namespace Tessel {

/// The implementation of any estimator: its names and its parameters. A family derives from the form for its
/// kind of learning, declares its parameters as members and lists them; what is common happens here.
class IEstimatable : public IIdentifiable {
 public:
    /// What tells this estimator from others in `Ladon` text.
    struct LadonIdentity {
        WString objectType;
        WString taskKind;
        WString algorithm;
    };

    /// @param modelName  the kind of model as people know it, such as "Naive Bayes".
    explicit IEstimatable(const WString& modelName) : IIdentifiable(modelName) { setModelName(modelName); }

    ProgressCallback progressCallback;

    virtual std::unique_ptr<IEstimatable> clone() const = 0;
    virtual LadonIdentity ladonIdentity() const = 0;
    /// All parameters, in the order of tables, checks and texts.
    virtual ParameterList parameters() = 0;

    /// Checks parameter by parameter; families add rules between parameters behind this loop.
    virtual void validate() const;
    virtual void reset();
    /// The values that the parameters have now, by description, and the learners of ensembles and searches:
    /// "Estimator: <model name>".
    DataFrame toDataFrame() const;
    /// That table and one that tells key, default, type and admissible values of every parameter.
    DataFrameVector toDataFrameVector() const;
    WString toLadon() const;
    void fromLadonString(const WString& text);
    /// The same as JSON values, for descriptions within descriptions.
    web::json::value toLadonValue() const;
    /// @throws UnsupportedJSONModel; the object may then be changed in part.
    void fromLadonValue(const web::json::value& description);

 protected:
    /// Adds what the description has beside the parameters, such as the learners of an ensemble.
    virtual void writeLearners(web::json::value& /*description*/) const {}
    virtual void readLearners(const web::json::value& /*description*/) {}
    /// Called when the parameters were read: sets what those that were given imply for others.
    virtual void completeParameters() {}
    /// Adds rows of the learners to the table of the parameters.
    virtual void describeLearners(StringVector& /*names*/, StringVector& /*values*/) const {}
    /// The same list for loops that only read.
    ParameterList constParameters() const { return const_cast<IEstimatable*>(this)->parameters(); }
};

/// The algorithm that a description names. @throws UnsupportedJSONModel when it names none.
WString algorithmOf(const web::json::value& description);

}  // namespace Tessel
