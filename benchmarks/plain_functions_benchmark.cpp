// The plain C functions beside the class interface: what the border costs, for one row with a large model and
// for a million rows with a small one.

#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <tessel/tessel.h>

namespace {

using namespace Tessel;

constexpr int kNumbers = 6, kTexts = 2, kManyRows = 1'000'000;

double uniform() {
    static unsigned state = 12345;
    state = state * 1664525u + 1013904223u;
    return static_cast<double>(state >> 8) / 16777216.0;
}

/// A table and the same cells as arrays of the C interface, row after row.
struct Input {
    std::vector<Vector> numbers = std::vector<Vector>(kNumbers);
    std::vector<StringVector> texts = std::vector<StringVector>(kTexts);
    StringVector names;
    std::vector<double> cells;
    std::vector<const wchar_t*> textCells, nameCells;

    explicit Input(int numRows) {
        for (int row = 0; row < numRows; ++row) {
            for (Vector& column : numbers) column.push_back(uniform());
            for (StringVector& column : texts)
                column.push_back(L"category " + std::to_wstring(static_cast<int>(uniform() * 8)));
        }
        for (int column = 0; column < kNumbers + kTexts; ++column)
            names.push_back(L"column " + std::to_wstring(column));
        for (const WString& name : names) nameCells.push_back(name.c_str());
        for (std::size_t row = 0; row < static_cast<std::size_t>(numRows); ++row) {
            for (const Vector& column : numbers) cells.push_back(column[row]);
            for (const StringVector& column : texts) textCells.push_back(column[row].c_str());
        }
    }

    DataFrame table() const {
        DataFrame made;
        for (std::size_t i = 0; i < kNumbers; ++i) made.append(DataFrameColumn(names[i], numbers[i]));
        for (std::size_t i = 0; i < kTexts; ++i) made.append(DataFrameColumn(names[kNumbers + i], texts[i]));
        return made;
    }
    int predict(const wchar_t* model) const {
        const Tessel_DoubleArray numberArray{cells.data(), cells.size()};
        const Tessel_StringArray textArray{textCells.data(), textCells.size()};
        const Tessel_StringArray nameArray{nameCells.data(), nameCells.size()};
        TSLSDK_StringArray* result = nullptr;
        const int status = iTessel_Predict(model, numbers.front().size(), &numberArray, &textArray,
                                           &nameArray, nullptr, nullptr, &result);
        benchmark::DoNotOptimize(TSLSDK_StringArrayData(result));
        TSLSDK_DeleteStringArray(result);
        return status;
    }
};

/// A tree of noise grows as large as one likes.
WString treeText(int numRows, int minRecords) {
    const DataFrame table = Input(numRows).table();
    StringVector labels;
    for (int row = 0; row < numRows; ++row) labels.push_back(uniform() < 0.5 ? L"yes" : L"no");
    Classification::DecisionTree::Estimator estimator;
    estimator.setMaxNumLevels(60).setMinNumRecordsInLeaves(minRecords);
    return estimator.fit(table, DataFrameColumn(L"label", labels)).toPMML();
}
const WString& largeModel() {
    static const WString text = treeText(40'000, 1);
    return text;
}
const WString& smallModel() {
    static const WString text = treeText(20'000, 2'000);
    return text;
}
const Input& oneRow() {
    static const Input input(1);
    return input;
}
const Input& manyRows() {
    static const Input input(kManyRows);
    return input;
}

Scoring::Classifier loaded(const WString& text) {
    Scoring::Classifier classifier;
    classifier.fromPMMLString(text);
    return classifier;
}

void byClass(benchmark::State& state, const WString& model, const Input& input, bool isTableMade) {
    const Scoring::Classifier classifier = loaded(model);
    const DataFrame table = input.table();
    for (auto _ : state) {
        const DataFrame result = classifier.predict(isTableMade ? input.table() : table);
        benchmark::DoNotOptimize(result.getNumRows());
        if (isTableMade) benchmark::DoNotOptimize(result(Util::all, 0).toStringVector());
    }
    state.counters["modelMChars"] = static_cast<double>(model.size()) / 1e6;
}
void byFunction(benchmark::State& state, const wchar_t* model, const Input& input) {
    for (auto _ : state)
        if (input.predict(model) != TESSEL_OK) state.SkipWithError("iTessel_Predict fails");
}

void OneRowClassifier(benchmark::State& state) { byClass(state, largeModel(), oneRow(), false); }
void OneRowClassifierFromVectors(benchmark::State& state) { byClass(state, largeModel(), oneRow(), true); }
void OneRowPlainText(benchmark::State& state) { byFunction(state, largeModel().c_str(), oneRow()); }
void OneRowLoadedText(benchmark::State& state) {
    Tessel_Model* model = nullptr;
    if (Tessel_LoadModel(largeModel().c_str(), &model) != TESSEL_OK) state.SkipWithError("cannot load");
    byFunction(state, Tessel_LoadedText(model), oneRow());
    Tessel_FreeModel(model);
}
void ManyRowsClassifier(benchmark::State& state) { byClass(state, smallModel(), manyRows(), false); }
void ManyRowsClassifierFromVectors(benchmark::State& state) {
    byClass(state, smallModel(), manyRows(), true);
}
void ManyRowsPlainText(benchmark::State& state) { byFunction(state, smallModel().c_str(), manyRows()); }

BENCHMARK(OneRowClassifier);
BENCHMARK(OneRowClassifierFromVectors);
BENCHMARK(OneRowPlainText);
BENCHMARK(OneRowLoadedText);
BENCHMARK(ManyRowsClassifier)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ManyRowsClassifierFromVectors)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ManyRowsPlainText)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
