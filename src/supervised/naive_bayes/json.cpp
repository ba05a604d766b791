#include <cmath>

#include <tessel/framework/errors.h>

#include "serialization/json/read.h"
#include "supervised/naive_bayes/model.h"

// The JSON members of naive Bayes: "laplaceSmoothing", "zeroProbability" and "inputs", in the order of the
// variables. An input has "mean", "variance" and "count" with an element per class when it is numeric, else
// "counts", an array per category with an element per class.

namespace Tessel::Classification::NaiveBayes {
namespace {

using Engine::NB::CategoricalInput;
using Engine::NB::GaussianInput;

std::vector<double> numbersOf(const web::json::value& value, const char* what, std::size_t size) {
    const Vector numbers = JSON::toVector(value, what);
    if (numbers.size() != size)
        throw NumElementsMismatch(static_cast<std::int64_t>(size), static_cast<std::int64_t>(numbers.size()));
    return {numbers.begin(), numbers.end()};
}

web::json::value valueOf(const GaussianInput& input) {
    web::json::value object = web::json::value::object(true);
    JSONModel::set(object, L"mean", JSONModel::fromNumbers(input.mean));
    JSONModel::set(object, L"variance", JSONModel::fromNumbers(input.variance));
    JSONModel::set(object, L"count", JSONModel::fromNumbers(input.count));
    return object;
}

web::json::value valueOf(const CategoricalInput& input, std::size_t numClasses) {
    std::vector<web::json::value> categories;
    for (std::size_t first = 0; first < input.counts.size(); first += numClasses)
        categories.push_back(
            JSONModel::fromNumbers(std::span<const double>(input.counts).subspan(first, numClasses)));
    web::json::value object = web::json::value::object(true);
    JSONModel::set(object, L"counts", web::json::value::array(std::move(categories)));
    return object;
}

GaussianInput readGaussian(const JSON::Members& input, std::size_t numClasses) {
    return {numbersOf(input.at("mean"), "mean", numClasses),
            numbersOf(input.at("variance"), "variance", numClasses),
            numbersOf(input.at("count"), "count", numClasses)};
}

CategoricalInput readCategorical(const JSON::Members& input, std::size_t numClasses,
                                 std::int32_t numCategories) {
    const web::json::array& categories = JSON::toArray(input.at("counts"), "counts");
    if (categories.size() != static_cast<std::size_t>(numCategories))
        throw NumElementsMismatch(numCategories, static_cast<std::int64_t>(categories.size()));
    CategoricalInput read{numCategories, {}};
    for (const web::json::value& category : categories) {
        const std::vector<double> counts = numbersOf(category, "counts", numClasses);
        read.counts.insert(read.counts.end(), counts.begin(), counts.end());
    }
    return read;
}

}  // namespace

void IModel::writeBody(web::json::value& model) const {
    std::vector<web::json::value> inputs;
    for (const Engine::NB::FittedInput& input : fitted_.inputs) {
        if (const auto* gaussian = std::get_if<GaussianInput>(&input))
            inputs.push_back(valueOf(*gaussian));
        else
            inputs.push_back(valueOf(std::get<CategoricalInput>(input), fitted_.classCounts.size()));
    }
    JSONModel::set(model, L"laplaceSmoothing", JSON::fromNumber(fitted_.laplace));
    JSONModel::set(model, L"zeroProbability", JSON::fromNumber(fitted_.zeroProbability));
    if (fitted_.densityFloor > 0.0)
        JSONModel::set(model, L"densityFloor", JSON::fromNumber(fitted_.densityFloor));
    JSONModel::set(model, L"inputs", web::json::value::array(std::move(inputs)));
}

void IModel::readBody(const JSON::Members& model) {
    fitted_.laplace = JSON::toNumber(model.at("laplaceSmoothing"), "laplaceSmoothing");
    fitted_.zeroProbability = JSON::toNumber(model.at("zeroProbability"), "zeroProbability");
    if (const web::json::value* const floor = model.find("densityFloor"))
        fitted_.densityFloor = JSON::toNumber(*floor, "densityFloor");
    fitted_.classCounts = classSchema.counts;
    const web::json::array& inputs = JSON::toArray(model.at("inputs"), "inputs");
    if (inputs.size() != schema.features.size())
        throw NumElementsMismatch(static_cast<std::int64_t>(schema.features.size()),
                                  static_cast<std::int64_t>(inputs.size()));
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const JSON::Members input(inputs.at(i), "An input");
        const FeatureSchema& feature = schema.features[i];
        if (feature.isCategorical)
            fitted_.inputs.emplace_back(
                readCategorical(input, classSchema.classes.size(), feature.numCategories()));
        else
            fitted_.inputs.emplace_back(readGaussian(input, classSchema.classes.size()));
    }
    checkFitted();
}

}  // namespace Tessel::Classification::NaiveBayes
