#include <cmath>
#include <filesystem>

#include <gtest/gtest.h>

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/data/convert.h>
#include <tessel/data/util/sets.h>
#include <tessel/decision_tree.h>
#include <tessel/framework/errors.h>
#include <tessel/naive_bayes.h>
#include <tessel/random_trees.h>

#include "scratch_folder.h"
#include "supervised/tables.h"

// What holds for every classifier of the library; a new family joins by its name in the list of types.

namespace Tessel {
namespace {

using Testing::LabelledTable;
using Testing::labelledTable;

template <class Estimator>
class Classifiers : public testing::Test {};
using Families = testing::Types<Classification::NaiveBayes::Estimator,
                                Classification::DecisionTree::Estimator, Classification::Bagging::Estimator,
                                Classification::Boosting::Estimator, Classification::RandomTrees::Estimator>;
TYPED_TEST_SUITE(Classifiers, Families);

template <class Estimator>
constexpr bool isEnsemble = requires(Estimator estimator) {
    estimator.setNumWeakLearners(1);
};
/// The class that the cut-off is for unless another was chosen.
template <class Estimator>
const WString kSuccessClass = isEnsemble<Estimator> ? L"class 1" : L"class 0";
template <class Estimator>
const WString kPosteriorPrefix = isEnsemble<Estimator> ? L"" : L"Posterior Probability: ";

Vector column(const DataFrame& table, int position) { return table(Util::all, position).toDoubleVector(); }

TYPED_TEST(Classifiers, PosteriorsSumToOneAndPredictionsFollowThem) {
    for (const int numClasses : {2, 3}) {
        const LabelledTable data = labelledTable(120, numClasses);
        const auto model = TypeParam().fit(data.features, data.target);
        const DataFrame posteriors = model.posteriorProbability(data.features);
        const DataFrame predicted = model.predict(data.features);
        ASSERT_EQ(posteriors.getNumCols(), numClasses);
        EXPECT_EQ(posteriors.getColName(1), kPosteriorPrefix<TypeParam> + L"class 1");
        EXPECT_EQ(predicted.getColName(0), L"Predicted Class");
        EXPECT_EQ(predicted.getRowName(7), L"Record 8");
        int numRight = 0;
        for (int row = 0; row < 120; ++row) {
            double sum = 0.0, largest = 0.0;
            for (int k = 0; k < numClasses; ++k) {
                sum += posteriors(row, k).toDouble();
                largest = std::max(largest, posteriors(row, k).toDouble());
            }
            EXPECT_NEAR(sum, 1.0, 1e-12);
            const WString label = predicted(row, 0).toString();
            EXPECT_EQ(posteriors(row, kPosteriorPrefix<TypeParam> + label).toDouble(), largest) << row;
            numRight += label == data.target(row).toString();
        }
        EXPECT_GT(numRight, 105);
        const DataFrame both = model.predictWithPosterior(data.features);
        EXPECT_EQ(both.getNumCols(), numClasses + 1);
        EXPECT_EQ(column(both, 1), column(posteriors, 0));
    }
}

TYPED_TEST(Classifiers, SuccessClassAndCutOffDecideBetweenTwoClasses) {
    const LabelledTable data = labelledTable(60, 2);
    auto model = TypeParam().fit(data.features, data.target);
    const WString success = kSuccessClass<TypeParam>;
    EXPECT_EQ(model.getSuccessClass(), success);
    EXPECT_EQ(model.getSuccessProbability(), 0.5);
    const Vector ofSuccess = column(model.posteriorProbability(data.features), success == L"class 0" ? 0 : 1);
    for (const double cutOff : {0.0, ofSuccess[3], 1.0}) {
        const auto predicted = model.setSuccessProbability(cutOff).predict(data.features)(Util::all, 0);
        for (int row = 0; row < 60; ++row)
            EXPECT_EQ(predicted(row).toString() == success,
                      ofSuccess[static_cast<std::size_t>(row)] >= cutOff);
    }
    EXPECT_THROW(model.setSuccessProbability(1.5), ValueOutOfRange);
    EXPECT_THROW(model.setSuccessClass(L"unknown"), InvalidSuccessLabel);
    EXPECT_EQ(model.getSuccessClass(), success);

    const auto chosen = TypeParam().setSuccessClass(L"class 1").fit(data.features, data.target);
    EXPECT_EQ(chosen.getSuccessClass(), L"class 1");
    EXPECT_THROW(TypeParam().setSuccessClass(L"unknown").fit(data.features, data.target),
                 InvalidSuccessLabel);
    const LabelledTable three = labelledTable(60, 3);
    EXPECT_EQ(TypeParam().fit(three.features, three.target).getSuccessClass(),
              isEnsemble<TypeParam> ? L"class 1" : L"");
}

TYPED_TEST(Classifiers, PriorsComeFromTheChosenMethod) {
    const LabelledTable data = labelledTable(61, 2);  // 31 and 30 rows
    const auto priorsOf = [&](const TypeParam& estimator) {
        return column(estimator.fit(data.features, data.target).priorProbability(), 0);
    };
    EXPECT_EQ(priorsOf(TypeParam()), (Vector{31.0 / 61.0, 30.0 / 61.0}));
    EXPECT_EQ(priorsOf(TypeParam().setPriorProbMethod(PriorProbMethodType::UNIFORM)), (Vector{0.5, 0.5}));
    auto estimator = TypeParam().setPriorProb(L"class 1", 0.9).setPriorProb(L"class 0", 0.1);
    EXPECT_EQ(estimator.getPriorProbMethod(), PriorProbMethodType::EXPLICIT);
    EXPECT_EQ(priorsOf(estimator), (Vector{0.1, 0.9}));
    EXPECT_THROW(priorsOf(estimator.setPriorProb(L"class 0", 0.2)), IncorrectTotalValue);
    EXPECT_NO_THROW(priorsOf(estimator.setPriorProbMethod(PriorProbMethodType::UNIFORM)));
}

TYPED_TEST(Classifiers, CopiesAndFitsAreIndependent) {
    const LabelledTable data = labelledTable(60, 2);
    TypeParam original;
    original.setName(L"original").setSuccessProbability(0.3);
    TypeParam copy = original;
    copy.setName(L"copy").setSuccessProbability(0.9);
    EXPECT_EQ(original.getName(), L"original");
    EXPECT_EQ(original.getSuccessProbability(), 0.3);
    const TypeParam moved = std::move(copy);
    EXPECT_EQ(moved.getName(), L"copy");

    auto first = original.fit(data.features, data.target);
    auto second = original.fit(data.features, data.target);
    auto sharing = first;
    sharing.setSuccessProbability(0.7);
    EXPECT_EQ(first.getSuccessProbability(), 0.7);  // copies of a model share it
    EXPECT_EQ(second.getSuccessProbability(), 0.3);
    const std::unique_ptr<ClassifierEstimator> cloned = original.clone();
    EXPECT_NE(dynamic_cast<TypeParam*>(cloned.get()), nullptr);
    EXPECT_EQ(cloned->getSuccessProbability(), 0.3);
}

TYPED_TEST(Classifiers, ModelsKnowTheirColumnsAndFindThemByName) {
    const LabelledTable data = labelledTable(60, 2);
    const auto model = TypeParam().setName(L"mine").fit(data.features, data.target);
    EXPECT_EQ(model.getName(), L"mine");
    EXPECT_EQ(model.getColNames(), (StringVector{L"first", L"second", L"group"}));
    EXPECT_EQ(model.getIndexColNames(), (StringVector{L"id"}));
    EXPECT_EQ(model.getTargetColName(), L"label");
    EXPECT_EQ(model.getClasses(), (StringVector{L"class 0", L"class 1"}));
    EXPECT_EQ(model.getRowNames().size(), 60u);

    const DataFrame turned = data.features(Util::all, StringVector{L"group", L"second", L"first"});
    EXPECT_EQ(column(model.posteriorProbability(turned), 0),
              column(model.posteriorProbability(data.features), 0));
    EXPECT_THROW(model.predict(turned(Util::all, StringVector{L"group", L"first"})), NotAValidColName);
    const DataFrame none = data.features(IntVector(), Util::all);
    EXPECT_EQ(model.predict(none).getNumRows(), 0);
    EXPECT_EQ(model.posteriorProbability(none).getNumCols(), 2);
}

TYPED_TEST(Classifiers, RefusesBadDataAndParametersBeforeFitting) {
    const LabelledTable data = labelledTable(60, 2);
    const TypeParam estimator;
    EXPECT_TRUE(estimator.isValid());
    EXPECT_TRUE(estimator.isValid(data.features, data.target));
    const DataFrameColumn constant(L"label", StringVector(60, L"same"));
    EXPECT_THROW(estimator.fit(data.features, constant), TooFewClassLabels);
    EXPECT_FALSE(estimator.isValid(data.features, constant));
    EXPECT_THROW(estimator.fit(data.features, labelledTable(59, 2).target), IncompatibleNumRows);
    EXPECT_THROW(estimator.fit(DataFrame(), DataFrameColumn()), TooFewNumRows);
    DataFrame twoTargets;
    twoTargets.append(data.target);
    EXPECT_NO_THROW(estimator.fit(data.features, twoTargets));
    twoTargets.append(data.target);
    EXPECT_THROW(estimator.fit(data.features, twoTargets), NumColumnsMismatch);

    for (const double infinity : {HUGE_VAL, -HUGE_VAL}) {
        DataFrame infinite = data.features;
        infinite(7, L"first") = infinity;
        EXPECT_FALSE(estimator.isValid(infinite, data.target));
        EXPECT_THROW(estimator.fit(infinite, data.target), ConstraintViolation);
        EXPECT_NO_THROW(estimator.fit(infinite(Util::except(IntVector{7}), Util::all),
                                      data.target.select(Util::range(0, 58))));
    }

    TypeParam outOfRange;
    outOfRange.setSuccessProbability(-0.5);
    EXPECT_FALSE(outOfRange.isValid());
    EXPECT_THROW(outOfRange.validate(), ValueOutOfRange);
    EXPECT_THROW(outOfRange.fit(data.features, data.target), ValueOutOfRange);
    outOfRange.reset();
    EXPECT_TRUE(outOfRange.isValid());
    outOfRange.setPriorProbMethod(static_cast<PriorProbMethodType>(7));
    EXPECT_THROW(outOfRange.validate(), ConstraintViolation);
}

TYPED_TEST(Classifiers, LadonHoldsWhatWasSetAndRestoresIt) {
    const WString untouched = TypeParam().toLadon();
    EXPECT_NE(untouched.find(L"\"objectType\":\"estimator\",\"type\":\"classification\",\"algorithm\":"),
              WString::npos);
    EXPECT_NE(untouched.find(L"\"parameters\":{}"), WString::npos);

    TypeParam estimator;
    estimator.setSuccessProbability(0.5).setPriorProb(L"größer", 0.25).setPriorProb(L"b", 0.75);
    const WString text = estimator.toLadon();
    EXPECT_NE(text.find(L"successProbability"), WString::npos);  // set, though to the default
    EXPECT_EQ(text.find(L"successClass"), WString::npos);
    TypeParam read;
    read.setSuccessClass(L"is forgotten").fromLadonString(text);
    EXPECT_EQ(read.toLadon(), text);
    EXPECT_EQ(read.getPriorProb(L"größer"), 0.25);
    EXPECT_EQ(read.getSuccessClass(), L"");
    // Priors are explicit without saying so, as the setter makes them; a method that is said holds.
    const WString method = L"\"priorProbMethod\":\"EXPLICIT\"";
    WString unsaid = text, uniform = text;
    read.fromLadonString(unsaid.erase(text.find(method), method.size() + 1));
    EXPECT_EQ(read.toLadon(), text);
    read.fromLadonString(uniform.replace(text.find(method) + 19, 8, L"UNIFORM"));
    EXPECT_EQ(read.getPriorProbMethod(), PriorProbMethodType::UNIFORM);
    read.fromLadonString(text);

    const ScratchFolder folder;
    const WString path = folder.wide("estimator.ladon");
    estimator.toLadon(path);
    TypeParam fromFile;
    fromFile.fromLadonFile(path);
    EXPECT_EQ(fromFile.toLadon(), text);
    folder.put("estimator.ladon", "\xEF\xBB\xBF" + Convert::toUtf8(text));  // as some editors save it
    fromFile.reset();
    fromFile.fromLadonFile(path);
    EXPECT_EQ(fromFile.toLadon(), text);
    folder.put("estimator.ladon", "{\"objectType\":\"\xFF\"}");
    EXPECT_THROW(fromFile.fromLadonFile(path), UnsupportedJSONModel);
    EXPECT_EQ(fromFile.toLadon(), text);
    std::filesystem::remove_all(folder.path);
    EXPECT_THROW(fromFile.fromLadonFile(path), FileNotFound);
    EXPECT_THROW(estimator.toLadon(path), UnableToWriteFile);

    WString otherTask = text, otherAlgorithm = text;
    otherTask.replace(text.find(L"classification"), 14, L"regression");
    otherAlgorithm.replace(text.find(L"\"algorithm\":\"") + 13, 1, L"X");
    for (const WString& bad : {otherTask, otherAlgorithm, text.substr(1), WString(), WString(L"[]"),
                               WString(L"{}"), WString(100000, L'['), WString(L"{\"objectType\":3}")}) {
        EXPECT_THROW(read.fromLadonString(bad), UnsupportedJSONModel);
        EXPECT_EQ(read.toLadon(), text);
    }
}

TYPED_TEST(Classifiers, TablesTellParametersAndModel) {
    const TypeParam estimator;
    const DataFrame parameters = estimator.toDataFrame();
    EXPECT_EQ(parameters.getName().find(L"Estimator: "), 0u);
    EXPECT_EQ(parameters.getNumCols(), 1);
    EXPECT_EQ(parameters(L"Success probability", 0).toString(), L"0.5");
    EXPECT_EQ(parameters(L"Prior probability method", 0).toString(), L"EMPIRICAL");
    const DataFrameVector described = estimator.toDataFrameVector();
    ASSERT_EQ(described.size(), 2u);
    EXPECT_EQ(described[1](L"Success probability", L"Admissible Values").toString(), L"[0, 1]");

    const LabelledTable data = labelledTable(60, 2);
    const auto model = estimator.fit(data.features, data.target);
    const DataFrameVector report = model.toDataFrameVector();
    EXPECT_EQ(report[0].getName(), L"Model: " + model.getModelName());
    EXPECT_EQ(report[0](L"Success class", L"Value").toString(), kSuccessClass<TypeParam>);
    EXPECT_EQ(report.at(L"Prior Probabilities")(L"class 1", L"Prior Probability").toDouble(), 0.5);
    EXPECT_EQ(report.at(L"Training Summary")(L"#Training records", 0).toInt(), 60);
}

}  // namespace
}  // namespace Tessel
