#pragma once

#include <map>
#include <memory>
#include <optional>

#include <tessel/data/data_frame_vector.h>
#include <tessel/data/util/sets.h>
#include <tessel/data/util/statistics.h>
#include <tessel/find_best_model.h>
#include <tessel/framework/errors.h>

#include "framework/classification.h"
#include "framework/regression.h"
#include "serialization/json/read.h"

namespace Tessel::FindBestModel {

enum class Kind { CLASSIFICATION, REGRESSION };

/// The display name of a family that is offered for the kind, else "Unknown".
WString learnerName(Kind kind, LearnerType type);
/// The family of an algorithm as texts name it; UNKNOWN for one that is not offered.
LearnerType typeOfAlgorithm(Kind kind, const WString& algorithm);
WString algorithmOfType(Kind kind, LearnerType type);

/// The candidates of a search.
/// @tparam Estimator  the implementation of the estimators of the kind.
template <class Estimator>
using Candidates = std::map<LearnerType, std::shared_ptr<const Estimator>>;

/// What the fitted searches of both kinds share.
/// @tparam Modelable  the implementation of the fitted models of the kind.
template <class Modelable>
class ISearched {
 public:
    explicit ISearched(Kind kind) : kind_(kind) {}
    virtual ~ISearched() = default;

    std::map<LearnerType, std::shared_ptr<Modelable>> models;
    StringVector log;
    DataFrame metrics{L"Metrics"};

    /// @throws NoSuchModel
    const std::shared_ptr<Modelable>& modelOf(LearnerType type) const;
    /// The model that scores. @throws NoModels, NoBestLearner
    Modelable& chosen() const;
    /// @throws NoBestLearner
    LearnerType bestLearner() const;

 protected:
    /// Scores the models and takes the best.
    /// @param measure  the one-row table of metrics of a model. @throws NoModels, NoBestLearner
    template <class Measure>
    WString chooseBest(const WString& metric, bool isLargestBest, bool useForScoring, Measure&& measure);
    /// Rows of the model summary, and the tables of the search.
    void describeSearch(const WString& metric, StringVector& labels, StringVector& values) const;
    void reportSearch(DataFrameVector& tables) const;

    // The JSON members "metric", "bestLearner", "metrics", "learnerForScoring" (all three absent before the
    // choice), "fittingLog" and "learners", the models as texts of their own.
    void writeSearch(int metric, web::json::value& model) const;
    /// @param makeBlank  a model to read from, by its algorithm; null for one that is not offered.
    template <class MakeBlank>
    int readSearch(const JSON::Members& model, MakeBlank&& makeBlank);

 private:
    void requireModels() const;
    StringVector learnerNames() const;
    void readMetrics(const JSON::Members& model);

    Kind kind_;
    std::optional<LearnerType> best_, learnerForScoring_;
};

template <class Modelable>
template <class Measure>
WString ISearched<Modelable>::chooseBest(const WString& metric, bool isLargestBest, bool useForScoring,
                                         Measure&& measure) {
    requireModels();
    std::vector<Vector> columns;
    StringVector colNames;
    for (const auto& [type, model] : models) {
        const DataFrame measured = measure(*model);
        colNames = measured.getColNames();
        columns.resize(colNames.size());
        for (std::size_t i = 0; i < columns.size(); ++i)
            columns[i].push_back(measured(0, static_cast<int>(i)).toDouble());
    }
    DataFrame table(L"Metrics");
    for (std::size_t i = 0; i < columns.size(); ++i) table.append(DataFrameColumn(colNames[i], columns[i]));
    table.setRowNames(learnerNames());

    const Vector& values = columns[colNames.find(metric)];
    const int row = isLargestBest ? Util::maxIndex(values) : Util::minIndex(values);
    if (row < 0) throw NoBestLearner();
    best_ = std::next(models.begin(), row)->first;
    if (useForScoring) learnerForScoring_ = best_;
    metrics = std::move(table);
    return learnerName(kind_, *best_);
}

template <class Modelable>
template <class MakeBlank>
int ISearched<Modelable>::readSearch(const JSON::Members& model, MakeBlank&& makeBlank) {
    for (const web::json::value& learner : JSON::toArray(model.at("learners"), "learners")) {
        const WString algorithm =
            JSON::toText(JSON::Members(learner, "A model").at("algorithm"), "algorithm");
        const LearnerType type = typeOfAlgorithm(kind_, algorithm);
        std::shared_ptr<Modelable> read = makeBlank(algorithm);
        if (!read || type == LearnerType::UNKNOWN) throw NotASetMember("learners", narrowText(algorithm));
        read->fromJSONValue(learner);
        if (!models.emplace(type, std::move(read)).second) throw DuplicateName(narrowText(algorithm));
    }
    log = JSON::toStringVector(model.at("fittingLog"), "fittingLog");
    const auto readType = [&](const char* name, std::optional<LearnerType>& type) {
        const web::json::value* const value = model.find(name);
        if (!value) return;
        type = getLearnerType(JSON::toText(*value, name));
        modelOf(*type);
    };
    readType("bestLearner", best_);
    readType("learnerForScoring", learnerForScoring_);
    readMetrics(model);
    return JSON::toInteger(model.at("metric"), "metric");
}

extern template class ISearched<Classification::IModelable>;
extern template class ISearched<Regression::IModelable>;

}  // namespace Tessel::FindBestModel
