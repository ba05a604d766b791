#include "evaluator/label_pairs.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>
#include <string>
#include <unordered_map>

#include <tessel/data/convert.h>

namespace Tessel {
namespace {

std::shared_ptr<ColumnCells> encodeNumbers(std::span<const double> numbers) {
    TextEncoder encoder;
    std::unordered_map<std::uint64_t, std::int32_t> codeOfBits;
    std::vector<std::int32_t> codes(numbers.size(), kMissingCode);
    for (std::size_t row = 0; row < numbers.size(); ++row) {
        const double number = numbers[row] + 0.0;  // makes a negative zero positive
        if (std::isnan(number)) continue;
        const auto [entry, isNew] = codeOfBits.try_emplace(std::bit_cast<std::uint64_t>(number), 0);
        if (isNew) entry->second = encoder.encode(Convert::toString(number));
        codes[row] = entry->second;
    }
    return ColumnCells::ofCodes(encoder.finish(), std::move(codes));
}

/// UTF-8 sorts by code points whatever the width of a wide character.
struct ClassKey {
    double number;
    std::string text;
};

std::vector<ClassKey> keysOf(const std::vector<WString>& classes) {
    std::vector<ClassKey> keys;
    keys.reserve(classes.size());
    bool areNumbers = true;
    for (const WString& label : classes) {
        ClassKey key{0.0, Convert::toUtf8Lossy(label)};
        areNumbers = areNumbers && Convert::tryToDouble(key.text, key.number) && !std::isnan(key.number);
        keys.push_back(std::move(key));
    }
    if (!areNumbers)
        for (ClassKey& key : keys) key.number = 0.0;
    return keys;
}

}  // namespace

std::shared_ptr<ColumnCells> labelCells(const Metrics::Labels& labels) {
    const auto& cells = ColumnAccess::cells(labels.column());
    return cells->isNumeric() ? encodeNumbers(cells->numbers()) : cells;
}

std::int32_t successCode(const ColumnCells& cells, const WString& successClass) {
    if (successClass.empty()) throw UnspecifiedStringParameter("Success Class");
    const std::int32_t code = cells.dictionary().find(successClass);
    return code == kMissingCode ? std::numeric_limits<std::int32_t>::max() : code;
}

LabelPairs::Side::Side(const Metrics::Labels& labels)
    : cells(labelCells(labels)),
      codes(cells->codes()),
      classOfCode(static_cast<std::size_t>(cells->dictionary().size()) + 1, kMissingCode) {}

LabelPairs::LabelPairs(const Metrics::Labels& actual, const Metrics::Labels& predicted)
    : actual_(actual), predicted_(predicted) {
    requireSameNumRows(actual_.codes.size(), predicted_.codes.size());
    TextEncoder encoder;
    for (Side* side : {&actual_, &predicted_})
        for (const std::int32_t code : side->cells->presentCodes())
            side->classOfCode[static_cast<std::size_t>(code) + 1] =
                encoder.encode(side->cells->dictionary()[code]);
    classes_ = encoder.finish()->levels();
}

void LabelPairs::sortClasses() {
    const std::vector<ClassKey> keys = keysOf(classes_);
    std::vector<std::size_t> order(classes_.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return keys[a].number != keys[b].number ? keys[a].number < keys[b].number
                                                : keys[a].text < keys[b].text;
    });
    StringVector sorted;
    for (const std::size_t position : order) sorted.push_back(classes_[position]);
    setClasses(sorted);
}

void LabelPairs::setClasses(const StringVector& classes) {
    const std::vector<WString>& texts = classes.elements();
    TextIndex index(texts);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (texts[i].empty()) throw ConstraintViolation("Classes", "A class must not be empty.");
        if (!index.insert(static_cast<std::int32_t>(i))) throw DuplicateName(Convert::toUtf8Lossy(texts[i]));
    }
    std::vector<std::int32_t> newPosition;
    for (const WString& label : classes_) {
        newPosition.push_back(index.find(label));
        if (newPosition.back() == kMissingCode) throw NotASetMember("Classes", Convert::toUtf8Lossy(label));
    }
    for (Side* side : {&actual_, &predicted_})
        for (std::int32_t& position : side->classOfCode)
            if (position != kMissingCode) position = newPosition[static_cast<std::size_t>(position)];
    classes_ = texts;
}

BinaryCounts countBinary(const Metrics::Labels& actual, const Metrics::Labels& predicted,
                         const WString& successClass, const Vector& weights) {
    const auto actualCells = labelCells(actual);
    const auto predictedCells = labelCells(predicted);
    const auto actualCodes = actualCells->codes();
    const auto predictedCodes = predictedCells->codes();
    requireSameNumRows(actualCodes.size(), predictedCodes.size());
    const std::int32_t actualSuccess = successCode(*actualCells, successClass);
    const std::int32_t predictedSuccess = successCode(*predictedCells, successClass);

    const RowWeights rowWeights(weights, actualCodes.size());
    const auto counts = tally(4, actualCodes.size(), rowWeights, [&](std::size_t row) -> std::int64_t {
        if (actualCodes[row] == kMissingCode || predictedCodes[row] == kMissingCode) return -1;
        return 2 * (actualCodes[row] == actualSuccess) + (predictedCodes[row] == predictedSuccess);
    });
    return {.truePositives = counts[3],
            .falsePositives = counts[1],
            .falseNegatives = counts[2],
            .trueNegatives = counts[0]};
}

HitCounts countHits(const Metrics::Labels& actual, const Metrics::Labels& predicted, const Vector& weights) {
    const LabelPairs pairs(actual, predicted);
    const RowWeights rowWeights(weights, pairs.numRows());
    const auto counts = tally(2, pairs.numRows(), rowWeights, [&](std::size_t row) -> std::int64_t {
        const std::int32_t actualClass = pairs.actual(row);
        const std::int32_t predictedClass = pairs.predicted(row);
        if (actualClass == kMissingCode || predictedClass == kMissingCode) return -1;
        return actualClass == predictedClass;
    });
    return {.right = counts[1], .wrong = counts[0]};
}

}  // namespace Tessel
