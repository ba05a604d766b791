#include "supervised/ensemble/model.h"

#include <algorithm>
#include <numeric>

#include <tessel/data/convert.h>

#include "engine/ensemble/votes.h"
#include "supervised/ensemble/fit_learners.h"
#include "supervised/ensemble/row_blocks.h"

namespace Tessel::Ensemble {

template <class Modelable>
void IMembersOf<Modelable>::add(std::shared_ptr<Modelable> model, double weight) {
    weakModels.push_back(std::move(model));
    weights.push_back(weight);
}

template <class Modelable>
DataFrame IMembersOf<Modelable>::summaryTable() const {
    DataFrame table(L"Model: Ensemble");
    table.append(DataFrameColumn(L"Value", StringVector{Convert::toString(weakModels.size()), algorithm}));
    table.setRowNames({L"#Weak Learners", L"Weak learner"});
    return table;
}

template <class Modelable>
void IMembersOf<Modelable>::reportMembers(DataFrameVector& tables) const {
    for (std::size_t m = 0; m < weakModels.size(); ++m)
        for (DataFrame& table : weakModels[m]->toDataFrameVector()) {
            table.setName(table.getName() + L": " + learnerTitle(static_cast<int>(m)));
            tables.push_back(std::move(table));
        }
}

template class IMembersOf<Classification::IModelable>;
template class IMembersOf<Regression::IModelable>;

// ---- classification

void IClassifier::score(const std::vector<FeatureColumn>& columns,
                        Classification::Posteriors& posteriors) const {
    const std::size_t numRows = posteriors.front().size();
    const auto scoreRows = [&](const std::vector<FeatureColumn>& some, std::size_t begin, std::size_t end) {
        std::vector<std::span<double>> votes;
        for (std::vector<double>& ofClass : posteriors)
            votes.push_back(std::span(ofClass).subspan(begin, end - begin));
        addUpVotes(some, votes);
    };
    // Labels that are no classes draw their votes in the order of the rows.
    const bool areKnown = std::all_of(weakModels.begin(), weakModels.end(), [&](const auto& model) {
        return model->classSchema.classes == classSchema.classes;
    });
    if (!areKnown) return scoreRows(columns, 0, numRows);
    Engine::Crew crew(Engine::numThreads());
    forEachRowBlock(crew, columns, numRows, scoreRows);
}

void IClassifier::addUpVotes(const std::vector<FeatureColumn>& columns,
                             const std::vector<std::span<double>>& votes) const {
    std::vector<std::int32_t> codes(votes.front().size());
    for (std::size_t m = 0; m < weakModels.size(); ++m) {
        const StringVector& labels = weakModels[m]->classSchema.classes;
        weakModels[m]->classify(columns, codes);
        if (!(labels == classSchema.classes)) {
            std::vector<std::int32_t> codeOf;
            for (const WString& label : labels)
                codeOf.push_back(static_cast<std::int32_t>(classSchema.classes.find(label)));
            for (std::int32_t& code : codes) code = codeOf[static_cast<std::size_t>(code)];
        }
        Engine::Ensemble::addVotes(static_cast<int>(m), weights[m], codes, votes);
    }
    // Votes are divided at the end, so that 7 of 10 are exactly 0.7.
    const double total = std::accumulate(weights.begin(), weights.end(), 0.0);
    if (total == 0.0) return;
    for (const std::span<double> ofClass : votes)
        for (double& vote : ofClass) vote /= total;
}

void IClassifier::report(DataFrameVector& tables) const {
    IModelable::report(tables);
    tables.push_back(summaryTable());
    reportMembers(tables);
    reportFamily(tables);
}

// ---- regression

void IRegressor::score(const std::vector<FeatureColumn>& columns, std::span<double> predictions) const {
    Engine::Crew crew(Engine::numThreads());
    forEachRowBlock(crew, columns, predictions.size(),
                    [&](const std::vector<FeatureColumn>& some, std::size_t begin, std::size_t end) {
                        const std::span<double> sums = predictions.subspan(begin, end - begin);
                        std::vector<double> own(sums.size());
                        std::fill(sums.begin(), sums.end(), 0.0);
                        for (const auto& model : weakModels) {
                            model->score(some, own);
                            for (std::size_t row = 0; row < own.size(); ++row) sums[row] += own[row];
                        }
                        for (double& sum : sums) sum = predictionOf(sum);
                    });
}

void IRegressor::report(DataFrameVector& tables) const {
    tables.push_back(summaryTable());
    reportMembers(tables);
    reportFamily(tables);
}

}  // namespace Tessel::Ensemble
