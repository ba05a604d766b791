#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <tessel/data/data_frame_vector.h>

#include "framework/classification.h"
#include "framework/regression.h"

namespace Tessel::Ensemble {

/// What the fitted ensembles of both kinds share: their members, each with a weight, and the report of them.
/// The members know the same features as the ensemble, and in the same order.
/// @tparam Modelable  the implementation of the fitted members.
template <class Modelable>
class IMembersOf {
 public:
    virtual ~IMembersOf() = default;

    std::vector<std::shared_ptr<Modelable>> weakModels;
    Vector weights;     ///< one a member
    WString algorithm;  ///< of the members, as texts name it

    void add(std::shared_ptr<Modelable> model, double weight);

 protected:
    /// "Model: Ensemble": how many weak learners and of which algorithm.
    DataFrame summaryTable() const;
    /// The reports of the members, each table with the number of its member behind its name.
    void reportMembers(DataFrameVector& tables) const;
};

class IClassifierMembers : public IMembersOf<Classification::IModelable> {};
class IRegressorMembers : public IMembersOf<Regression::IModelable> {};

/// The out-of-bag error of an ensemble of bootstrap samples; empty where it is not known.
class IOutOfBag {
 public:
    virtual ~IOutOfBag() = default;
    DataFrame outOfBagError{L"Out-of-bag Error"};

 protected:
    void writeOutOfBag(web::json::value& model) const;
    void readOutOfBag(const JSON::Members& model);
    void reportOutOfBag(DataFrameVector& tables) const {
        if (outOfBagError.getNumCols() > 0) tables.push_back(outOfBagError);
    }
};

/// A fitted ensemble of classifiers that vote.
class IClassifier : public Classification::IModelable, public IClassifierMembers {
 public:
    using Classification::IModelable::IModelable;

 protected:
    void score(const std::vector<FeatureColumn>& columns,
               Classification::Posteriors& posteriors) const override;
    WString posteriorColName(const WString& label) const override { return label; }
    void addUpVotes(const std::vector<FeatureColumn>& columns,
                    const std::vector<std::span<double>>& votes) const;
    void report(DataFrameVector& tables) const override;
    /// Adds the tables of the family.
    virtual void reportFamily(DataFrameVector& /*tables*/) const {}

    bool writesTransformationsFirst() const override { return true; }
    /// How a PMML scorer combines the members.
    virtual const wchar_t* multipleModelMethod() const = 0;
    void writeBody(PMML::ModelWriter& writer) const override;
    void readBody(const PMML::ModelReader& reader) override;
    void writeBody(web::json::value& model) const override;
    void readBody(const JSON::Members& model) override;
};

/// A fitted ensemble of regressors; families say what becomes of the sum of the predictions.
class IRegressor : public Regression::IModelable, public IRegressorMembers {
 public:
    using Regression::IModelable::IModelable;

    void score(const std::vector<FeatureColumn>& columns, std::span<double> predictions) const override;

 protected:
    /// The prediction that the sum of those of the members stands for; the mean unless overridden.
    virtual double predictionOf(double sum) const { return sum / static_cast<double>(weakModels.size()); }
    void describe(StringVector& /*labels*/, StringVector& /*values*/) const override {}
    void report(DataFrameVector& tables) const override;
    virtual void reportFamily(DataFrameVector& /*tables*/) const {}

    bool writesTransformationsFirst() const override { return true; }
    /// How a PMML scorer combines the members.
    virtual const wchar_t* multipleModelMethod() const = 0;
    void writeBody(PMML::ModelWriter& writer) const override;
    void readBody(const PMML::ModelReader& reader) override;
    void writeBody(web::json::value& model) const override;
    void readBody(const JSON::Members& model) override;
};

/// A fitted ensemble of bootstrap samples: its JSON text and its report have the out-of-bag error too.
/// @tparam Base  IClassifier or IRegressor
template <class Base>
class IBootstrapped : public Base, public IOutOfBag {
 public:
    using Base::Base;

 protected:
    using Base::readBody;
    using Base::writeBody;
    void writeBody(web::json::value& model) const override {
        Base::writeBody(model);
        writeOutOfBag(model);
    }
    void readBody(const JSON::Members& model) override {
        Base::readBody(model);
        readOutOfBag(model);
    }
    void reportFamily(DataFrameVector& tables) const override { reportOutOfBag(tables); }
};

extern template class IMembersOf<Classification::IModelable>;
extern template class IMembersOf<Regression::IModelable>;

}  // namespace Tessel::Ensemble
