#include "supervised/find_best_model/learners.h"

#include <tessel/data/convert.h>
#include <tessel/framework/ladon.h>

namespace Tessel::FindBestModel {
namespace {

/// A family that can be searched; names are empty where a kind does not offer it.
struct Family {
    LearnerType type;
    WString classifierName, classifierAlgorithm;
    WString regressorName, regressorAlgorithm;

    const WString& name(Kind kind) const {
        return kind == Kind::CLASSIFICATION ? classifierName : regressorName;
    }
    const WString& algorithm(Kind kind) const {
        return kind == Kind::CLASSIFICATION ? classifierAlgorithm : regressorAlgorithm;
    }
};

const std::vector<Family>& families() {
    namespace Names = Ladon::ModelAlgorithm;
    static const std::vector<Family> rows{
        {LearnerType::LOGISTIC_REGRESSION, L"Logistic Regression", Names::LOGISTIC_REGRESSION,
         L"Linear Regression", Names::LINEAR_REGRESSION},
        {LearnerType::DECISION_TREE, L"Decision Tree", Names::DECISION_TREE, L"Decision Tree",
         Names::DECISION_TREE},
        {LearnerType::NEAREST_NEIGHBORS, L"Nearest Neighbors", Names::NEAREST_NEIGHBORS, L"Nearest Neighbors",
         Names::NEAREST_NEIGHBORS},
        {LearnerType::NEURAL_NETWORK, L"Neural Network", Names::NEURAL_NETWORK, L"Neural Network",
         Names::NEURAL_NETWORK},
        {LearnerType::DISCRIMINANT_ANALYSIS, L"Discriminant Analysis", Names::DISCRIMINANT_ANALYSIS, {}, {}},
        {LearnerType::NAIVE_BAYES, L"Naive Bayes", Names::NAIVE_BAYES, {}, {}},
        {LearnerType::BAGGING, L"Bagging", Names::BAGGING, L"Bagging", Names::BAGGING},
        {LearnerType::BOOSTING, L"Boosting", Names::BOOSTING, L"Boosting", Names::BOOSTING},
        {LearnerType::RANDOM_TREES, L"Random Trees", Names::RANDOM_TREES, L"Random Trees",
         Names::RANDOM_TREES},
    };
    return rows;
}

}  // namespace

WString learnerName(Kind kind, LearnerType type) {
    for (const Family& family : families())
        if (family.type == type && !family.name(kind).empty()) return family.name(kind);
    return L"Unknown";
}

LearnerType typeOfAlgorithm(Kind kind, const WString& algorithm) {
    for (const Family& family : families())
        if (!algorithm.empty() && family.algorithm(kind) == algorithm) return family.type;
    return LearnerType::UNKNOWN;
}

WString algorithmOfType(Kind kind, LearnerType type) {
    for (const Family& family : families())
        if (family.type == type) return family.algorithm(kind);
    return {};
}

LearnerType getLearnerType(const WString& name) {
    for (const Family& family : families())
        if (!name.empty() && (family.classifierName == name || family.regressorName == name))
            return family.type;
    return LearnerType::UNKNOWN;
}

template <class Modelable>
const std::shared_ptr<Modelable>& ISearched<Modelable>::modelOf(LearnerType type) const {
    const auto found = models.find(type);
    if (found == models.end()) throw NoSuchModel(narrowText(learnerName(kind_, type)));
    return found->second;
}

template <class Modelable>
void ISearched<Modelable>::requireModels() const {
    if (!models.empty()) return;
    if (log.empty()) throw NoModels();
    throw NoModels(narrowText(Util::join(log, L"; ")));
}

template <class Modelable>
Modelable& ISearched<Modelable>::chosen() const {
    requireModels();
    if (!learnerForScoring_) throw NoBestLearner();
    return *models.at(*learnerForScoring_);
}

template <class Modelable>
LearnerType ISearched<Modelable>::bestLearner() const {
    if (!best_) throw NoBestLearner();
    return *best_;
}

template <class Modelable>
StringVector ISearched<Modelable>::learnerNames() const {
    StringVector names;
    for (const auto& [type, model] : models) names.push_back(learnerName(kind_, type));
    return names;
}

template <class Modelable>
void ISearched<Modelable>::readMetrics(const JSON::Members& model) {
    const web::json::value* const columns = model.find("metrics");
    if (!columns) return;
    DataFrame table = JSONModel::toNumericTable(*columns, "metrics", metrics.getName());
    table.setRowNames(learnerNames());  // as many as there are models, or it is an error
    metrics = std::move(table);
}

template <class Modelable>
void ISearched<Modelable>::describeSearch(const WString& metric, StringVector& labels,
                                          StringVector& values) const {
    const auto add = [&](const WString& label, const WString& value) {
        labels.push_back(label);
        values.push_back(value);
    };
    add(L"#Models", Convert::toString(models.size()));
    add(L"Metric for best learner", metric);
    if (best_) add(L"Best learner", learnerName(kind_, *best_));
    if (learnerForScoring_) add(L"Learner for scoring", learnerName(kind_, *learnerForScoring_));
}

template <class Modelable>
void ISearched<Modelable>::reportSearch(DataFrameVector& tables) const {
    if (!metrics.empty()) tables.push_back(metrics);
    DataFrame messages(L"Fitting Log");
    messages.append(DataFrameColumn(L"Message", log));
    tables.push_back(std::move(messages));
}

template <class Modelable>
void ISearched<Modelable>::writeSearch(int metric, web::json::value& model) const {
    using JSONModel::set;
    set(model, L"metric", web::json::value::number(metric));
    if (best_) set(model, L"bestLearner", JSON::fromText(learnerName(kind_, *best_)));
    if (learnerForScoring_)
        set(model, L"learnerForScoring", JSON::fromText(learnerName(kind_, *learnerForScoring_)));
    if (metrics.getNumCols() > 0) set(model, L"metrics", JSONModel::fromNumericTable(metrics));
    set(model, L"fittingLog", JSONModel::fromStrings(log));
    std::vector<web::json::value> learners;
    for (const auto& [type, learner] : models) learners.push_back(learner->toJSONValue());
    set(model, L"learners", web::json::value::array(std::move(learners)));
}

template class ISearched<Classification::IModelable>;
template class ISearched<Regression::IModelable>;

}  // namespace Tessel::FindBestModel
