#include <algorithm>
#include <array>
#include <set>

#include <tessel/framework/ladon.h>

#include "serialization/json/read.h"
#include "synthetic/synthetic_data_generator.h"

// What was learned as the fitted model of a `Ladon` text. What belongs to single columns stands in arrays in
// the order of the columns; numbers read back to the same bits.

namespace Tessel {

using namespace SyntheticDataGeneration;

namespace {

using JSONModel::fromNumbers;
using JSONModel::set;
using web::json::value;

/// An array with an element per column.
template <class Write>
value forEachColumn(const Fitted& fitted, Write write) {
    std::vector<value> elements;
    for (const FittedColumn& column : fitted.columns) elements.push_back(write(column));
    return value::array(std::move(elements));
}

/// The element per column of a member. @throws MalformedJSON for another number of them.
const web::json::array& columnArray(const JSON::Members& model, const char* name, std::size_t numColumns) {
    const web::json::array& elements = JSON::toArray(model.at(name), name);
    if (elements.size() != numColumns)
        throw NumElementsMismatch(static_cast<std::int64_t>(numColumns),
                                  static_cast<std::int64_t>(elements.size()));
    return elements;
}

bool toFlag(const value& json, const char* what) {
    if (!json.is_boolean()) throw UnsupportedJSONModel(std::string(what) + " must be true or false.");
    return json.as_bool();
}

template <class E>
E toTerm(const value& json, const char* what) {
    const std::optional<E> term = ofKeyword<E>(JSON::toText(json, what));
    if (!term) throw UnsupportedJSONModel(std::string(what) + " is unknown.");
    return *term;
}

// ---- goodness of fit and curves

value valueOf(const Engine::Dist::GoodnessOfFit& fit) {
    value object = value::object(true);
    set(object, L"terms", value::number(fit.numParameters));
    set(object, L"numValues", value::number(static_cast<std::uint64_t>(fit.numValues)));
    const auto setTest = [&](WStringView name, const Engine::Dist::FitTest& test) {
        set(object, name, fromNumbers(std::array{test.statistic, test.criticalValue}));
    };
    setTest(L"chiSquare", fit.chiSquare);
    setTest(L"kolmogorovSmirnov", fit.kolmogorovSmirnov);
    setTest(L"andersonDarling", fit.andersonDarling);
    set(object, L"logLikelihood", JSON::fromNumber(fit.logLikelihood));
    return object;
}

Engine::Dist::GoodnessOfFit readGoodnessOfFit(const value& json) {
    const JSON::Members object(json, "A goodness of fit");
    const auto readTest = [&](const char* name) {
        const Vector numbers = JSON::toVector(object.at(name), name);
        return Engine::Dist::FitTest{numbers.at(0), numbers.at(1)};
    };
    Engine::Dist::GoodnessOfFit fit;
    fit.chiSquare = readTest("chiSquare");
    fit.kolmogorovSmirnov = readTest("kolmogorovSmirnov");
    fit.andersonDarling = readTest("andersonDarling");
    fit.logLikelihood = JSON::toNumber(object.at("logLikelihood"), "logLikelihood");
    fit.numParameters = JSON::toInteger(object.at("terms"), "terms");
    fit.numValues =
        static_cast<std::size_t>(std::max(0, JSON::toInteger(object.at("numValues"), "numValues")));
    return fit;
}

value valueOf(const MetalogPoints& curve) {
    value object = value::object(true);
    set(object, L"probability", fromNumbers(curve.probabilities));
    set(object, L"inverseCdf", fromNumbers(curve.quantiles));
    set(object, L"density", fromNumbers(curve.densities));
    return object;
}

MetalogPoints readCurve(const value& json) {
    const JSON::Members object(json, "A curve");
    const auto read = [&](const char* name) { return JSON::toVector(object.at(name), name).elements(); };
    MetalogPoints curve{read("probability"), read("inverseCdf"), read("density")};
    if (curve.quantiles.size() != curve.probabilities.size() ||
        curve.densities.size() != curve.probabilities.size())
        throw UnsupportedJSONModel("The vectors of a curve differ in their lengths.");
    return curve;
}

// ---- margins

void writeColumns(value& model, const Fitted& fitted) {
    const auto setColumns = [&](WStringView name, auto write) {
        set(model, name, forEachColumn(fitted, write));
    };
    setColumns(L"colNames", [](const FittedColumn& column) { return JSON::fromText(column.name); });
    setColumns(L"metalogFitted",
               [](const FittedColumn& column) { return value::boolean(column.isFitted()); });
    setColumns(L"bestMetalog", [](const FittedColumn& column) { return value::number(column.numTerms()); });
    setColumns(L"metalogCoefficients",
               [](const FittedColumn& column) { return fromNumbers(column.coefficients); });
    setColumns(L"bounds", [](const FittedColumn& column) {
        return fromNumbers(std::array{column.lower, column.upper});
    });
    setColumns(L"metalogGOFType",
               [](const FittedColumn& column) { return JSON::fromText(keywordOf(column.type)); });
    setColumns(L"metalogGOF", [](const FittedColumn& column) {
        std::vector<value> candidates;
        for (const auto& candidate : column.candidates) candidates.push_back(valueOf(candidate));
        return value::array(std::move(candidates));
    });
    setColumns(L"metalogCurve", [](const FittedColumn& column) { return valueOf(column.curve); });
}

FittedColumn readMetalog(const Vector& coefficients, const Vector& bounds) {
    FittedColumn column;
    column.coefficients = coefficients.elements();
    column.lower = bounds.at(0);
    column.upper = bounds.at(1);
    if (column.isFitted() && !column.distribution().isValid())
        throw UnsupportedJSONModel("The coefficients of a metalog are no distribution.");
    return column;
}

std::vector<FittedColumn> readColumns(const JSON::Members& model) {
    const StringVector names = JSON::toStringVector(model.at("colNames"), "colNames");
    if (std::set<WString>(names.begin(), names.end()).size() != names.size())
        throw UnsupportedJSONModel("Two columns have one name.");
    const auto array = [&](const char* name) -> const web::json::array& {
        return columnArray(model, name, names.size());
    };
    const web::json::array &flags = array("metalogFitted"), &terms = array("bestMetalog"),
                           &coefficients = array("metalogCoefficients"), &bounds = array("bounds"),
                           &types = array("metalogGOFType"), &candidates = array("metalogGOF"),
                           &curves = array("metalogCurve");
    std::vector<FittedColumn> columns;
    for (std::size_t i = 0; i < names.size(); ++i) {
        FittedColumn column = readMetalog(JSON::toVector(coefficients.at(i), "metalogCoefficients"),
                                          JSON::toVector(bounds.at(i), "bounds"));
        column.name = names[i];
        column.type = toTerm<GoodnessOfFitType>(types.at(i), "metalogGOFType");
        for (const value& candidate : JSON::toArray(candidates.at(i), "metalogGOF"))
            column.candidates.push_back(readGoodnessOfFit(candidate));
        column.curve = readCurve(curves.at(i));
        if (toFlag(flags.at(i), "metalogFitted") != column.isFitted() ||
            JSON::toInteger(terms.at(i), "bestMetalog") != column.numTerms() ||
            column.candidates.empty() == column.isFitted())
            throw UnsupportedJSONModel("The members of a metalog contradict each other.");
        columns.push_back(std::move(column));
    }
    return columns;
}

// ---- dependence

void writeDependence(value& model, const Fitted& fitted) {
    const DependenceFit* const learned = fitted.dependence();
    const DependenceFit none;
    const DependenceFit& fit = learned ? *learned : none;
    const std::size_t numVars = fitted.fittedNames().size();
    std::vector<value> sigma, failed;
    for (std::size_t row = 0; row * numVars < fit.result.sigma.size(); ++row)
        sigma.push_back(fromNumbers(std::span(fit.result.sigma).subspan(row * numVars, numVars)));
    for (const DependenceFit& attempt : fitted.attempts)
        if (!attempt.isFitted)
            failed.push_back(JSON::fromText(
                attempt.type == CorrelationType::RANK ? keywordOf(attempt.type) : keywordOf(attempt.copula)));
    set(model, L"correlationFitted", value::boolean(learned != nullptr));
    set(model, L"correlationSigma", value::array(std::move(sigma)));
    set(model, L"selectedCopula", JSON::fromText(keywordOf(fit.copula)));
    set(model, L"copulaTheta", JSON::fromNumber(fit.result.theta));
    set(model, L"copulaDF", JSON::fromNumber(fit.result.degreesOfFreedom));
    set(model, L"copulaStatistic", JSON::fromNumber(fit.result.statistic));
    set(model, L"correlationRepaired", value::boolean(fit.result.isRepaired));
    set(model, L"copulaAtLimit", value::boolean(fit.result.isAtLimit));
    set(model, L"failedCorrelations", value::array(std::move(failed)));
}

DependenceFit readFailure(const value& json) {
    const WString keyword = JSON::toText(json, "failedCorrelations");
    if (keyword == keywordOf(CorrelationType::RANK)) return {CorrelationType::RANK};
    return {CorrelationType::COPULA, toTerm<CopulaType>(json, "failedCorrelations")};
}

/// Row-major; checks nothing but the shape, since sampling checks the rest.
std::vector<double> readSigma(const value& json, std::size_t numVars) {
    std::vector<double> sigma;
    for (const value& element : JSON::toArray(json, "correlationSigma")) {
        const Vector row = JSON::toVector(element, "correlationSigma");
        if (row.size() != numVars) throw UnsupportedJSONModel("The correlation matrix is not square.");
        sigma.insert(sigma.end(), row.begin(), row.end());
    }
    if (!sigma.empty() && sigma.size() != numVars * numVars)
        throw UnsupportedJSONModel("The correlation matrix is not square.");
    return sigma;
}

std::vector<DependenceFit> readDependence(const JSON::Members& model, std::size_t numVars) {
    std::vector<DependenceFit> attempts;
    for (const value& failure : JSON::toArray(model.at("failedCorrelations"), "failedCorrelations"))
        attempts.push_back(readFailure(failure));
    DependenceFit fit;
    fit.copula = toTerm<CopulaType>(model.at("selectedCopula"), "selectedCopula");
    fit.type = fit.copula == CopulaType::NONE ? CorrelationType::RANK : CorrelationType::COPULA;
    fit.result.sigma = readSigma(model.at("correlationSigma"), numVars);
    fit.result.theta = JSON::toNumber(model.at("copulaTheta"), "copulaTheta");
    fit.result.degreesOfFreedom = JSON::toNumber(model.at("copulaDF"), "copulaDF");
    fit.result.statistic = JSON::toNumber(model.at("copulaStatistic"), "copulaStatistic");
    fit.result.isRepaired = toFlag(model.at("correlationRepaired"), "correlationRepaired");
    fit.result.isAtLimit = toFlag(model.at("copulaAtLimit"), "copulaAtLimit");
    fit.isFitted = toFlag(model.at("correlationFitted"), "correlationFitted");
    if (fit.isFitted) attempts.push_back(std::move(fit));
    return attempts;
}

}  // namespace

void ISyntheticDataGenerator::writeLearners(value& description) const {
    copulas.writeFlags(description[JSON::toNative(Ladon::Keyword::PARAMETERS)]);
    if (fitted_.columns.empty() && log_.empty()) return;
    value model = value::object(true);
    set(model, L"modelName", JSON::fromText(getModelName()));
    writeColumns(model, fitted_);
    writeDependence(model, fitted_);
    set(model, L"simulationLog", JSONModel::fromStrings(log_));
    set(description, Ladon::Keyword::MODEL, std::move(model));
}

void ISyntheticDataGenerator::readLearners(const value& description) {
    fitted_ = {};
    log_.clear();
    JSONModel::translatingErrors([&] {
        const value* const found = JSON::Members(description, "A Ladon description").find("fittedModel");
        if (!found) return;
        const JSON::Members model(*found, "A fitted model");
        fitted_.columns = readColumns(model);
        fitted_.attempts = readDependence(model, fitted_.fittedNames().size());
        log_ = JSON::toStringVector(model.at("simulationLog"), "simulationLog");
        setModelName(JSON::toText(model.at("modelName"), "modelName"));
    });
}

}  // namespace Tessel
