#include <tessel/data/util/tables.h>

#include "synthetic/quality.h"
#include "synthetic/report.h"
#include "synthetic/synthetic_data_generator.h"

// The public class: construction and forwarding, nothing else.

namespace Tessel {

using namespace SyntheticDataGeneration;

using Implementation = ISyntheticDataGenerator;

SyntheticDataGenerator::SyntheticDataGenerator() : EstimatorHandle(std::make_unique<Implementation>()) {}

SyntheticDataGenerator& SyntheticDataGenerator::setName(const WString& name) {
    as<Implementation>().setName(name);
    return *this;
}
const WString& SyntheticDataGenerator::getModelName() const { return as<Implementation>().getModelName(); }
SyntheticDataGenerator& SyntheticDataGenerator::setModelName(const WString& modelName) {
    assignModelName(modelName);
    return *this;
}
void SyntheticDataGenerator::assignModelName(const WString& modelName) {
    as<Implementation>().setModelName(modelName);
}

// ---- fitting and generating

SyntheticDataGenerator& SyntheticDataGenerator::fit(const DataFrame& table) {
    as<Implementation>().fit(table);
    return *this;
}
DataFrame SyntheticDataGenerator::generate() { return as<Implementation>().generate(); }
DataFrame SyntheticDataGenerator::transform(const DataFrame& /*table*/) {
    if (getGenerateSample()) return generate();
    return DataFrame(getModelName() + L": Synthetic Sample");
}
DataFrame SyntheticDataGenerator::fitTransform(const DataFrame& table) { return fit(table).transform(table); }
void SyntheticDataGenerator::validate() const { as<Implementation>().validate(); }

// ---- parameters

SyntheticDataGenerator& SyntheticDataGenerator::setNumMetalogTerms(const WString& column, int value) {
    as<Implementation>().numMetalogTerms.setFor(column, value);
    return *this;
}
int SyntheticDataGenerator::getNumMetalogTerms(const WString& column) const {
    return as<Implementation>().numMetalogTerms.getFor(
        column, getMetalogAuto() ? kDefaultMaxTerms : kDefaultNumTerms);
}

SyntheticDataGenerator& SyntheticDataGenerator::setMetalogLowerBound(const WString& column, double value) {
    as<Implementation>().metalogLowerBound.setFor(column, value);
    return *this;
}
double SyntheticDataGenerator::getMetalogLowerBound(const WString& column) const {
    return as<Implementation>().metalogLowerBound.getFor(column, -std::numeric_limits<double>::infinity());
}

SyntheticDataGenerator& SyntheticDataGenerator::setMetalogUpperBound(const WString& column, double value) {
    as<Implementation>().metalogUpperBound.setFor(column, value);
    return *this;
}
double SyntheticDataGenerator::getMetalogUpperBound(const WString& column) const {
    return as<Implementation>().metalogUpperBound.getFor(column, std::numeric_limits<double>::infinity());
}

SyntheticDataGenerator& SyntheticDataGenerator::setMetalogGoodnessOfFitType(const WString& column,
                                                                            GoodnessOfFitType value) {
    as<Implementation>().metalogGoodnessOfFitType.setFor(column, value);
    return *this;
}
GoodnessOfFitType SyntheticDataGenerator::getMetalogGoodnessOfFitType(const WString& column) const {
    return as<Implementation>().metalogGoodnessOfFitType.getFor(column, kDefaultGoodnessOfFit);
}

SyntheticDataGenerator& SyntheticDataGenerator::setMetalogAuto(bool value) {
    as<Implementation>().metalogAuto.set(value);
    return *this;
}
bool SyntheticDataGenerator::getMetalogAuto() const { return as<Implementation>().metalogAuto.get(); }

SyntheticDataGenerator& SyntheticDataGenerator::setUseMinMaxAsBounds(bool value) {
    as<Implementation>().useMinMaxAsBounds.set(value);
    return *this;
}
bool SyntheticDataGenerator::getUseMinMaxAsBounds() const {
    return as<Implementation>().useMinMaxAsBounds.get();
}

SyntheticDataGenerator& SyntheticDataGenerator::setComputeMetalogCurves(bool value) {
    as<Implementation>().computeMetalogCurves.set(value);
    return *this;
}
bool SyntheticDataGenerator::getComputeMetalogCurves() const {
    return as<Implementation>().computeMetalogCurves.get();
}

SyntheticDataGenerator& SyntheticDataGenerator::setCorrelationType(CorrelationType value) {
    as<Implementation>().correlationType.set(value);
    return *this;
}
CorrelationType SyntheticDataGenerator::getCorrelationType() const {
    return as<Implementation>().correlationType.get();
}

SyntheticDataGenerator& SyntheticDataGenerator::setGenerateSample(bool value) {
    as<Implementation>().generateSample.set(value);
    return *this;
}
bool SyntheticDataGenerator::getGenerateSample() const { return as<Implementation>().generateSample.get(); }

SyntheticDataGenerator& SyntheticDataGenerator::setRandomSeed(int value) {
    as<Implementation>().randomSeed.set(value);
    return *this;
}
int SyntheticDataGenerator::getRandomSeed() const { return as<Implementation>().randomSeed.get(); }

SyntheticDataGenerator& SyntheticDataGenerator::setRandomGeneratorType(RandomGeneratorType value) {
    as<Implementation>().randomGenerator.set(value);
    return *this;
}
RandomGeneratorType SyntheticDataGenerator::getRandomGeneratorType() const {
    return as<Implementation>().randomGenerator.get();
}

SyntheticDataGenerator& SyntheticDataGenerator::setSamplingMethodType(SamplingMethodType value) {
    as<Implementation>().samplingMethod.set(value);
    return *this;
}
SamplingMethodType SyntheticDataGenerator::getSamplingMethodType() const {
    return as<Implementation>().samplingMethod.get();
}

SyntheticDataGenerator& SyntheticDataGenerator::setRandomStreamType(RandomStreamType value) {
    as<Implementation>().randomStream.set(value);
    return *this;
}
RandomStreamType SyntheticDataGenerator::getRandomStreamType() const {
    return as<Implementation>().randomStream.get();
}

SyntheticDataGenerator& SyntheticDataGenerator::setSampleSize(int value) {
    as<Implementation>().sampleSize.set(value);
    return *this;
}
int SyntheticDataGenerator::getSampleSize() const { return as<Implementation>().sampleSize.get(); }

SyntheticDataGenerator& SyntheticDataGenerator::setExpression(const WString& value) {
    as<Implementation>().expression.set(value);
    return *this;
}
const WString& SyntheticDataGenerator::getExpression() const { return as<Implementation>().expression.get(); }

SyntheticDataGenerator& SyntheticDataGenerator::setCopula(CopulaType type, bool isSelected) {
    as<Implementation>().copulas.select(type, isSelected);
    return *this;
}
bool SyntheticDataGenerator::getCopula(CopulaType type) const {
    return as<Implementation>().copulas.isSelected(type);
}

// ---- what was learned

namespace {

/// The learned dependence when `isWanted` says so, else null.
template <class Condition>
const DependenceFit* dependenceIf(const Fitted& fitted, Condition isWanted) {
    const DependenceFit* const learned = fitted.dependence();
    return learned && isWanted(*learned) ? learned : nullptr;
}

}  // namespace

StringVector SyntheticDataGenerator::getColNames() const {
    StringVector names;
    for (const FittedColumn& column : as<Implementation>().fitted().columns) names.push_back(column.name);
    return names;
}
bool SyntheticDataGenerator::isMetalogFitted() const { return as<Implementation>().fitted().areAllFitted(); }
bool SyntheticDataGenerator::isMetalogFitted(const WString& column) const {
    return as<Implementation>().fitted().column(column).isFitted();
}
DataFrame SyntheticDataGenerator::getBestMetalog() const {
    return bestMetalogTable(as<Implementation>().fitted());
}
int SyntheticDataGenerator::getBestMetalog(const WString& column) const {
    return as<Implementation>().fitted().column(column).numTerms();
}
DataFrame SyntheticDataGenerator::getMetalogCoefficients(const WString& column) const {
    return coefficientTable(as<Implementation>().fitted().column(column));
}
DataFrameVector SyntheticDataGenerator::getMetalogCoefficients() const {
    return forFittedColumns(as<Implementation>().fitted(), coefficientTable);
}
DataFrame SyntheticDataGenerator::getMetalogGoodnessOfFit(const WString& column) const {
    return goodnessOfFitTable(as<Implementation>().fitted().column(column));
}
DataFrameVector SyntheticDataGenerator::getMetalogGoodnessOfFit() const {
    return forFittedColumns(as<Implementation>().fitted(), goodnessOfFitTable);
}
DataFrame SyntheticDataGenerator::getMetalogCurve(const WString& column) const {
    return curveTable(as<Implementation>().fitted().column(column));
}
DataFrameVector SyntheticDataGenerator::getMetalogCurve() const {
    return forFittedColumns(as<Implementation>().fitted(), curveTable);
}
DataFrame SyntheticDataGenerator::getBounds() const { return boundsTable(as<Implementation>().fitted()); }

bool SyntheticDataGenerator::isCorrelationFitted() const {
    return as<Implementation>().fitted().dependence() != nullptr;
}
CopulaType SyntheticDataGenerator::getSelectedCopula() const {
    const DependenceFit* const learned = as<Implementation>().fitted().dependence();
    return learned ? learned->copula : CopulaType::NONE;
}
double SyntheticDataGenerator::getCopulaTheta() const {
    const DependenceFit* const learned = as<Implementation>().fitted().dependence();
    return learned ? learned->result.theta : std::numeric_limits<double>::quiet_NaN();
}
double SyntheticDataGenerator::getCopulaDegreesOfFreedom() const {
    const DependenceFit* const learned = as<Implementation>().fitted().dependence();
    return learned ? learned->result.degreesOfFreedom : std::numeric_limits<double>::quiet_NaN();
}
DataFrame SyntheticDataGenerator::getCorrelationSigma() const {
    const Fitted& fitted = as<Implementation>().fitted();
    const DependenceFit* const learned = fitted.dependence();
    return sigmaTable(fitted, learned, L"Correlation Sigma",
                      learned ? learned->name() : getCorrelationTypeName(getCorrelationType()));
}
DataFrame SyntheticDataGenerator::getRankCorrelationSigma() const {
    const Fitted& fitted = as<Implementation>().fitted();
    const DependenceFit* const learned =
        dependenceIf(fitted, [](const DependenceFit& fit) { return fit.type == CorrelationType::RANK; });
    const WString name = getCorrelationTypeName(CorrelationType::RANK);
    return sigmaTable(fitted, learned, L"Sigma: " + name, name);
}
DataFrame SyntheticDataGenerator::getCopulaSigma(CopulaType type) const {
    const Fitted& fitted = as<Implementation>().fitted();
    const DependenceFit* const learned = dependenceIf(fitted, [type](const DependenceFit& fit) {
        return fit.type == CorrelationType::COPULA && fit.copula == type;
    });
    const WString name = getCopulaTypeName(type);
    return sigmaTable(fitted, learned, L"Sigma: " + name, name);
}
DataFrame SyntheticDataGenerator::getCorrelationFits() const {
    return correlationFitsTable(as<Implementation>().fitted());
}

StringVector SyntheticDataGenerator::getLog() const { return as<Implementation>().log(); }
DataFrame SyntheticDataGenerator::getLogDF() const { return logTable(as<Implementation>().log()); }

DataFrame SyntheticDataGenerator::toDataFrame() const {
    return parameterTable(as<Implementation>().parameters());
}
DataFrameVector SyntheticDataGenerator::toDataFrameVector() const {
    DataFrameVector tables;
    tables.push_back(toDataFrame());
    const Fitted& fitted = as<Implementation>().fitted();
    if (fitted.columns.empty()) return tables;
    tables.push_back(getBestMetalog());
    tables.push_back(getBounds());
    tables.append(getMetalogCoefficients());
    tables.append(getMetalogGoodnessOfFit());
    tables.append(getMetalogCurve());
    tables.push_back(getCorrelationFits());
    if (fitted.dependence() && !fitted.dependence()->result.sigma.empty())
        tables.push_back(getCorrelationSigma());
    tables.push_back(getLogDF());
    return tables;
}

// ---- tools

DataFrame SyntheticDataGenerator::calculateExpression(const DataFrame& table, const WString& expression) {
    DataFrame result(L"Expression");
    result.append(Util::calculateExpression(table, expression));
    return result;
}
DataFrameVector SyntheticDataGenerator::qualityReport(const DataFrame& original, const DataFrame& generated) {
    return SyntheticDataGeneration::qualityReport(original, generated);
}

WString SyntheticDataGenerator::getCopulaTypeName(CopulaType type) { return nameOf(type); }
WString SyntheticDataGenerator::getCorrelationTypeName(CorrelationType type) { return nameOf(type); }
WString SyntheticDataGenerator::getGoodnessOfFitTypeName(GoodnessOfFitType type) { return nameOf(type); }
WString SyntheticDataGenerator::getRandomGeneratorTypeName(RandomGeneratorType type) { return nameOf(type); }
WString SyntheticDataGenerator::getSamplingMethodTypeName(SamplingMethodType type) { return nameOf(type); }
WString SyntheticDataGenerator::getRandomStreamTypeName(RandomStreamType type) { return nameOf(type); }

}  // namespace Tessel
