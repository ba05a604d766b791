#include "engine/nb/naive_bayes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>
#include <omp.h>

namespace Tessel::Engine::NB {
namespace {

using Numbers = std::vector<double>;
using Codes = std::vector<std::int32_t>;

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// Agreement with log posteriors that were printed with 16 digits.
constexpr double kReferenceTolerance = 1e-12;

Input numeric(const Numbers& cells) { return {false, cells, {}, 0}; }
Input categorical(const Codes& cells, std::int32_t numCategories) { return {true, {}, cells, numCategories}; }

using Score = decltype(posteriorProbability);

/// One column of n scores per class.
std::vector<Numbers> scores(Score score, const Fitted& fitted, const Numbers& logPriors,
                            const std::vector<Input>& inputs, std::size_t numRows) {
    std::vector<Numbers> columns(logPriors.size(), Numbers(numRows));
    score(fitted, logPriors, inputs, std::vector<std::span<double>>(columns.begin(), columns.end()));
    return columns;
}

/// log P(class 0 | row) - log P(class 1 | row) with the class shares of the training rows as priors.
Numbers logOdds(const Fitted& fitted, const std::vector<Input>& inputs, std::size_t numRows) {
    const Numbers logPriors{std::log(fitted.classCounts[0]), std::log(fitted.classCounts[1])};
    const std::vector<Numbers> columns = scores(logPosterior, fitted, logPriors, inputs, numRows);
    Numbers odds(numRows);
    for (std::size_t row = 0; row < numRows; ++row) odds[row] = columns[0][row] - columns[1][row];
    return odds;
}

// The expected log odds of the two references are those of e1071 1.7-13 under R 4.2.2: naiveBayes(class ~ .),
// then predict(type = "raw").

TEST(NaiveBayes, AgreesWithReferenceOnNumbersWithMissingCells) {
    // Rows 196 to 212 and 230 to 236 of Pima.tr2 (package MASS): glucose, skin fold, body mass, diabetes.
    const Numbers glu{141, 129, 106, 118, 155, 134, 75,  146, 180, 104, 164, 80,
                      171, 139, 122, 116, 195, 102, 133, 118, 136, 100, 138, 131};
    Numbers skin(24, kMissing);
    std::copy_n(Numbers{34, 49, 37, 36, 26}.begin(), 5, skin.begin());
    skin[17] = 23;
    const Numbers bmi{25.4, 38.5, 39.4, 33.3, 34.0, 28.9,     33.3, 37.9, 43.3, 28.8, 32.8, 19.1,
                      43.6, 25.6, 23.0, 25.6, 30.9, kMissing, 27.0, 44.5, 29.9, 30.0, 40.1, 43.2};
    const Codes type{0, 1, 0, 0, 1, 1, 0, 1, 1, 0, 1, 0, 1, 1, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1};
    const Numbers expected{
        1.3847965510944691,  -2.1935861491317414, 1.7000628592467510,  1.6880197071642637,
        -1.0128731109267957, 0.4574809613244070,  2.2557689226962765,  -1.2407175117332525,
        -4.6018719412767819, 2.0324779753339897,  -2.3717815802309965, 4.2782311749922712,
        -3.6708625484921402, 0.5768511972975290,  2.0619519884601143,  1.9544427865362053,
        -5.5119992253178536, 2.0284991615234738,  0.7779457119904301,  0.3200606921106904,
        0.2004929233167304,  2.0301380739065440,  -0.7684169660500064, -0.4027101924677491};

    const std::vector<Input> inputs{numeric(glu), numeric(skin), numeric(bmi)};
    const Numbers odds = logOdds(fit(inputs, type, 2), inputs, 24);
    for (std::size_t row = 0; row < 24; ++row)
        EXPECT_NEAR(odds[row], expected[row], kReferenceTolerance) << row;
}

TEST(NaiveBayes, AgreesWithReferenceOnFrequencies) {
    // Passengers of the Titanic by class (1st, 2nd, 3rd, crew) within sex (female, male) within age (adult,
    // child).
    const std::int32_t died[16] = {4, 13, 89, 3, 118, 154, 387, 670, 0, 0, 17, 0, 0, 0, 35, 0};
    const std::int32_t survived[16] = {140, 80, 76, 20, 57, 14, 75, 192, 1, 13, 14, 0, 5, 11, 13, 0};
    const Numbers expected[2] = {
        {-2.20536143617918645, -1.34886731391956460, -0.60886376845647761, -0.54101744689793918,
         0.11181330459157146, 0.96830742685119287, 1.70831097231427886, 1.77615729387281784,
         -3.08507017225610269, -2.22857604999648107, -1.48857250453339418, -1.42072618297485587,
         -0.76789543148534445, 0.08859869077427718, 0.82860223623736295, 0.89644855779590249},
        {-2.19207807235376251, -1.34130194759023413, -0.60253980786441952, -0.53420448867908199,
         0.11810602766913447, 0.96888215243266451, 1.70764429215847890, 1.77597961134381577,
         -3.06929764060017529, -2.21852151583664803, -1.47975937611083275, -1.41142405692549566,
         -0.75911354057727820, 0.09166258418624995, 0.83042472391206523, 0.89876004309740209}};  // Laplace 1

    Codes travelled, sex, age, classes, cellTravelled, cellSex, cellAge;
    for (std::int32_t cell = 0; cell < 16; ++cell) {
        cellTravelled.push_back(cell % 4);
        cellSex.push_back(cell / 4 % 2);
        cellAge.push_back(cell / 8);
        const auto numPassengers = static_cast<std::size_t>(died[cell] + survived[cell]);
        travelled.insert(travelled.end(), numPassengers, cell % 4);
        sex.insert(sex.end(), numPassengers, cell / 4 % 2);
        age.insert(age.end(), numPassengers, cell / 8);
        classes.insert(classes.end(), static_cast<std::size_t>(died[cell]), 0);
        classes.insert(classes.end(), static_cast<std::size_t>(survived[cell]), 1);
    }
    for (const int laplace : {0, 1}) {
        const Fitted fitted =
            fit(std::vector{categorical(travelled, 4), categorical(sex, 2), categorical(age, 2)}, classes, 2,
                laplace);
        const Numbers odds = logOdds(
            fitted, {categorical(cellTravelled, 4), categorical(cellSex, 2), categorical(cellAge, 2)}, 16);
        for (std::size_t cell = 0; cell < 16; ++cell)
            EXPECT_NEAR(odds[cell], expected[laplace][cell], kReferenceTolerance) << laplace << ", " << cell;
    }
}

TEST(NaiveBayes, FollowsItsRulesForThinInputs) {  // expected values worked by hand
    struct Case {
        const char* what;
        Numbers cells;
        Codes classes;
        Numbers mean, variance, count;
    };
    const Case cases[] = {
        {"ordinary", {1, 3, 5, 7, 9}, {0, 0, 1, 1, 1}, {2, 7}, {2, 4}, {2, 3}},
        {"missing cells", {1, kMissing, 3, 5, 7, kMissing, 9}, {0, 0, 0, 1, 1, 1, 1}, {2, 7}, {2, 4}, {2, 3}},
        {"constant in a class", {0.1, 0.1, 0.1, 7, 9}, {0, 0, 0, 1, 1}, {0.1, 8}, {2e-9, 2}, {3, 2}},
        {"constant in each class", {1, 1, 3, 3}, {0, 0, 1, 1}, {1, 3}, {4e-24 / 3, 4e-24 / 3}, {2, 2}},
        {"one value in a class", {4, 1, 3}, {0, 1, 1}, {4, 2}, {2, 2}, {1, 2}},
        {"no value in a class", {kMissing, 1, 3}, {0, 1, 1}, {2, 2}, {2, 2}, {0, 2}},
        {"constant", {0.1, 0.1, 0.1, 0.1}, {0, 1, 0, 1}, {0.1, 0.1}, {0, 0}, {2, 2}},
        {"one row", {5}, {1}, {5, 5}, {0, 0}, {0, 1}},
        {"all missing", {kMissing, kMissing}, {0, 1}, {0, 0}, {0, 0}, {0, 0}},
        {"no rows", {}, {}, {0, 0}, {0, 0}, {0, 0}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const Fitted fitted = fit(std::vector{numeric(test.cells)}, test.classes, 2);
        const auto& input = std::get<GaussianInput>(fitted.inputs[0]);
        EXPECT_EQ(input.mean, test.mean);
        for (const std::size_t code : {0U, 1U}) EXPECT_DOUBLE_EQ(input.variance[code], test.variance[code]);
        EXPECT_EQ(input.count, test.count);
        if (input.variance[0] > 0.0) continue;
        const auto posterior = scores(posteriorProbability, fitted, {std::log(0.25), std::log(0.75)},
                                      {numeric(test.cells)}, test.cells.size());
        for (const double probability : posterior[1]) EXPECT_NEAR(probability, 0.75, 1e-15);
    }
}

TEST(NaiveBayes, ReplacesZeroFrequenciesAndIgnoresUnknownCells) {  // expected values worked by hand
    // Three categories seen 2, 1, 0 times with class 0 and 0, 3, 0 times with class 1; class 2 has no values.
    const Codes cells{0, 0, 1, -1, 1, 1, 1, -1}, classes{0, 0, 0, 0, 1, 1, 1, 2};
    struct Case {
        double laplace;
        Numbers probabilities;
    };
    const double zero = 1e-10;
    const Case cases[] = {
        {0.0, {2.0 / 3, zero, 2.0 / 6, 1.0 / 3, 1, 4.0 / 6, zero, zero, zero}},
        {0.5, {2.5 / 4.5, 0.5 / 4.5, 1.0 / 3, 1.5 / 4.5, 3.5 / 4.5, 1.0 / 3, 0.5 / 4.5, 0.5 / 4.5, 1.0 / 3}}};
    for (const Case& test : cases) {
        const Fitted fitted = fit(std::vector{categorical(cells, 3)}, classes, 3, test.laplace);
        const Numbers probabilities =
            categoryProbabilities(fitted, std::get<CategoricalInput>(fitted.inputs[0]));
        for (std::size_t i = 0; i < 9; ++i) EXPECT_DOUBLE_EQ(probabilities[i], test.probabilities[i]) << i;

        const Codes scored{-1, 4, 1};
        const Numbers logPriors{std::log(0.5), std::log(0.5), -kInfinity};
        const auto posterior = scores(posteriorProbability, fitted, logPriors, {categorical(scored, 3)}, 3);
        const double odds = test.probabilities[3] / test.probabilities[4];
        EXPECT_EQ(posterior[0][0], 0.5) << "missing";
        EXPECT_EQ(posterior[0][1], 0.5) << "unseen";
        EXPECT_NEAR(posterior[0][2], odds / (1 + odds), 1e-15);
        EXPECT_EQ(posterior[2], Numbers(3)) << "prior 0";
    }
}

TEST(NaiveBayes, KeepsItsDigitsFarFromZeroAndOverManyInputs) {
    // 1e9 + j / 1024 for integers j: mean and variance follow from integer sums.
    const std::int64_t n = 100'001;
    Numbers cells;
    std::int64_t sum = 0, squares = 0;
    for (std::int64_t i = 0; i < n; ++i) {
        const std::int64_t j = i * 7919 % 4093;
        sum += j, squares += j * j;
        cells.push_back(1e9 + static_cast<double>(j) / 1024);
    }
    const Fitted fitted = fit(std::vector{numeric(cells)}, Codes(cells.size()), 1);
    const auto& input = std::get<GaussianInput>(fitted.inputs[0]);
    const double variance =
        static_cast<double>(n * squares - sum * sum) / static_cast<double>(n * (n - 1)) / 0x1p20;
    EXPECT_NEAR(input.mean[0], 1e9 + static_cast<double>(sum) / static_cast<double>(n) / 1024,
                2e-7);  // 2 ulp
    EXPECT_NEAR(input.variance[0], variance, 1e-14 * variance);

    // Densities of exp(-800) underflow one by one; each of 1,000 inputs has log odds 80 x = 1/1000.
    const GaussianInput far{{-40, 40}, {1, 1}, {9, 9}};
    const Fitted wide{{9, 9}, std::vector<FittedInput>(1000, far)};
    const Numbers x{1.0 / 80'000};
    const auto posterior = scores(posteriorProbability, wide, {0, 0}, std::vector(1000, numeric(x)), 1);
    EXPECT_NEAR(posterior[1][0], 1 / (1 + std::exp(-1.0)), 1e-7);  // eps * 1,000 inputs * score of 800,000
}

TEST(NaiveBayes, GivesPosteriorsOfAnySizeToTheLastDigits) {
    // Without inputs the posteriors are 1 / (1 + exp(-x)) and exp(-x) / (1 + exp(-x)) for log priors 0 and
    // -x.
    for (double x = 0.0; x < 800.0; x += 0.0371) {
        const auto posterior = scores(posteriorProbability, Fitted{{1, 1}, {}}, {0.0, -x}, {}, 1);
        const auto logarithm = scores(logPosterior, Fitted{{1, 1}, {}}, {0.0, -x}, {}, 1);
        const double expected = x < 708.3 ? std::exp(-x) / (1.0 + std::exp(-x)) : 0.0;
        // Each exp is off by up to 1 unit in the last place, sum and quotient by half of one.
        ASSERT_NEAR(posterior[1][0], expected, 4 * 0x1p-52 * expected + 1e-307) << x;
        ASSERT_NEAR(posterior[0][0], 1.0 / (1.0 + std::exp(-x)), 3 * 0x1p-53) << x;
        ASSERT_DOUBLE_EQ(logarithm[0][0], -std::log1p(std::exp(-x))) << x;
    }
}

TEST(NaiveBayes, DrawsInExtremeNumbersAndBreaksTiesForTheFirstClass) {
    const Fitted fitted{{1, 1, 1}, {GaussianInput{{0, 0, 5}, {1, 4, 4}, {2, 2, 2}}}};
    const Numbers cells{kInfinity, -kInfinity, 1e300, kMissing};
    const Codes expected{2, 1, 2, 0};  // far out the widest class wins, of equal ones the nearer
    Codes winners(4);
    predict(fitted, Numbers(3), std::vector{numeric(cells)}, winners);
    EXPECT_EQ(winners, expected);
    const auto posterior = scores(posteriorProbability, fitted, Numbers(3), {numeric(cells)}, 4);
    for (std::size_t row = 0; row < 3; ++row)
        EXPECT_EQ(posterior[static_cast<std::size_t>(expected[row])][row], 1.0) << row;
    EXPECT_NEAR(posterior[0][3], 1.0 / 3, 1e-15);
}

TEST(NaiveBayes, IsTheSameForAnyNumberOfThreads) {
    const std::size_t numRows = 30'011, numClasses = 7;  // neither fills its last block
    std::uint64_t state = 12345;
    const auto draw = [&] {  // 32 bits of the generator MMIX (Knuth)
        state = state * 6364136223846793005u + 1442695040888963407u;
        return static_cast<std::uint32_t>(state >> 32);
    };
    Codes classes(numRows);
    for (auto& code : classes) code = static_cast<std::int32_t>(draw() % numClasses);
    std::vector<Numbers> numbers(4, Numbers(numRows));
    std::vector<Codes> codes(3, Codes(numRows));
    for (std::size_t row = 0; row < numRows; ++row) {
        for (Numbers& column : numbers)
            column[row] = draw() % 50 == 0 ? kMissing : draw() * 0x1p-32 + classes[row];
        for (Codes& column : codes) column[row] = static_cast<std::int32_t>(draw() % 5) - 1;
    }
    std::vector<Input> inputs;
    for (const Numbers& column : numbers) inputs.push_back(numeric(column));
    for (const Codes& column : codes) inputs.push_back(categorical(column, 4));

    const Numbers logPriors(numClasses);
    const int before = omp_get_max_threads();
    std::vector<std::vector<Numbers>> posteriors, logPosteriors;
    for (const int numThreads : {1, 2, 3}) {
        omp_set_num_threads(numThreads);
        const Fitted fitted = fit(inputs, classes, numClasses);
        posteriors.push_back(scores(posteriorProbability, fitted, logPriors, inputs, numRows));
        logPosteriors.push_back(scores(logPosterior, fitted, logPriors, inputs, numRows));
        Codes winners(numRows);
        predict(fitted, logPriors, inputs, winners);
        EXPECT_EQ(posteriors.back(), posteriors.front());
        EXPECT_EQ(logPosteriors.back(), logPosteriors.front());
        for (std::size_t row = 0; row < numRows; ++row) {
            double total = 0.0, largest = 0.0;
            for (std::size_t code = 0; code < numClasses; ++code) {
                const double probability = posteriors.back()[code][row];
                total += probability;
                largest = std::max(largest, probability);
                ASSERT_NEAR(std::exp(logPosteriors.back()[code][row]), probability, 1e-12);
            }
            ASSERT_NEAR(total, 1.0, 1e-15 * numClasses);
            ASSERT_EQ(posteriors.back()[static_cast<std::size_t>(winners[row])][row], largest);
        }
    }
    omp_set_num_threads(before);
}

}  // namespace
}  // namespace Tessel::Engine::NB
