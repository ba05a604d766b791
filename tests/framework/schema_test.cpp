#include "framework/schema.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <tessel/framework/errors.h>

namespace Tessel {
namespace {

const double kMissing = std::numeric_limits<double>::quiet_NaN();

DataFrame mixedTable() {
    DataFrame table;
    table.append(DataFrameColumn(L"id", StringVector{L"r1", L"r2", L"r3", L"r4"}));
    table.append(DataFrameColumn(L"age", Vector{30.0, kMissing, 20.0, 30.0}));
    table.append(DataFrameColumn(L"city", StringVector{L"Wien", L"", L"Graz", L"Wien"}));
    table.setIndexedColNames({L"id"});
    return table;
}

std::vector<std::int32_t> codes(const FeatureColumn& column) {
    return {column.codes().begin(), column.codes().end()};
}

TEST(Schema, ReadsNumericAndCategoricalFeatures) {
    const TrainingFeatures training = readTrainingFeatures(mixedTable());
    EXPECT_EQ(training.schema.featureNames(), (StringVector{L"age", L"city"}));
    EXPECT_EQ(training.schema.indexColNames, (StringVector{L"id"}));
    EXPECT_EQ(training.schema.trainingRowNames()[3], L"Record 4");
    EXPECT_EQ(training.columns[0].numbers()[2], 20.0);
    EXPECT_EQ(codes(training.columns[1]), (std::vector<std::int32_t>{0, -1, 1, 0}));

    // A numeric column named as categorical: its values ascending are the categories.
    const TrainingFeatures listed = readTrainingFeatures(mixedTable(), {1});
    EXPECT_EQ(codes(listed.columns[0]), (std::vector<std::int32_t>{1, -1, 0, 1}));
    EXPECT_EQ((*listed.schema.features[0].categories)[0], L"20");
}

TEST(Schema, CategoriesAreThoseOfTheRowsTakenNotOfTheWholeTable) {
    const DataFrame rows = mixedTable()(IntVector{2, 3}, Util::all);
    const TrainingFeatures training = readTrainingFeatures(rows);
    EXPECT_EQ((*training.schema.features[1].categories).levels(), (std::vector<WString>{L"Graz", L"Wien"}));
    EXPECT_EQ(codes(training.columns[1]), (std::vector<std::int32_t>{0, 1}));
    EXPECT_EQ(training.schema.trainingRowNames(), (StringVector{L"Record 3", L"Record 4"}));
}

TEST(Schema, FindsFeaturesByNameWhenScoring) {
    const FittedSchema schema = readTrainingFeatures(mixedTable(), {1}).schema;
    DataFrame table;
    table.append(DataFrameColumn(L"extra", Vector{1.0, 2.0, 3.0}));
    table.append(DataFrameColumn(L"city", StringVector{L"Linz", L"Graz", L""}));
    table.append(DataFrameColumn(L"age", StringVector{L"30", L"20", L"77"}));  // texts of a numeric category
    const auto columns = readFeatures(schema, table);
    EXPECT_EQ(codes(columns[0]), (std::vector<std::int32_t>{1, 0, 2}));  // 2: never met in training
    EXPECT_EQ(codes(columns[1]), (std::vector<std::int32_t>{2, 1, -1}));

    EXPECT_THROW(readFeatures(schema, table(Util::all, StringVector{L"city"})), NotAValidColName);
    const FittedSchema numeric = readTrainingFeatures(mixedTable()).schema;
    EXPECT_THROW(readFeatures(numeric, table), NonNumericData);
}

TEST(Schema, RefusesTablesThatNothingCanBeLearnedFrom) {
    EXPECT_THROW(readTrainingFeatures(DataFrame()), TooFewNumRows);
    DataFrame onlyIndex = mixedTable()(Util::all, StringVector{L"id"});
    EXPECT_THROW(readTrainingFeatures(onlyIndex), TooFewNumColumns);
    DataFrame twice = mixedTable();
    twice.setColName(L"city", L"age");
    EXPECT_THROW(readTrainingFeatures(twice), DuplicateName);
    DataFrame infinite = mixedTable();
    infinite(1, L"age") = std::numeric_limits<double>::infinity();
    EXPECT_THROW(requireFinite(readTrainingFeatures(infinite)), ConstraintViolation);
}

TEST(Schema, ClassesComeInOrderOfFirstAppearance) {
    const ClassTarget text = readClassTarget(DataFrameColumn(L"y", StringVector{L"no", L"yes", L"no"}));
    EXPECT_EQ(text.classes, (StringVector{L"no", L"yes"}));
    EXPECT_EQ(text.codes, (std::vector<std::int32_t>{0, 1, 0}));
    EXPECT_EQ(text.counts, (std::vector<double>{2.0, 1.0}));
    const ClassTarget number = readClassTarget(DataFrameColumn(L"y", Vector{1.0, 0.5, 1.0, 0.0}));
    EXPECT_EQ(number.classes, (StringVector{L"1", L"0.5", L"0"}));
    EXPECT_EQ(number.codes, (std::vector<std::int32_t>{0, 1, 0, 2}));
    EXPECT_THROW(readClassTarget(DataFrameColumn(L"y", Vector{1.0, kMissing})), ConstraintViolation);
    EXPECT_THROW(readClassTarget(DataFrameColumn(L"y", StringVector{L"a", L""})), ConstraintViolation);
}

}  // namespace
}  // namespace Tessel
