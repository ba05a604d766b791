#pragma once

#include <tessel/data/data_frame_vector.h>

#include "framework/parameter.h"
#include "synthetic/fitted.h"

// The tables in which the generator tells what it learned.

namespace Tessel::SyntheticDataGeneration {

/// "Parameter Info".
DataFrame parameterTable(const ParameterList& parameters);
DataFrame bestMetalogTable(const Fitted& fitted);
DataFrame coefficientTable(const FittedColumn& column);
DataFrame goodnessOfFitTable(const FittedColumn& column);
DataFrame curveTable(const FittedColumn& column);
DataFrame boundsTable(const Fitted& fitted);
/// The correlations of an attempt. @throws SDGNoCorrelationSigma when it is null or has none.
DataFrame sigmaTable(const Fitted& fitted, const DependenceFit* attempt, const WString& title,
                     const WString& what);
DataFrame correlationFitsTable(const Fitted& fitted);
DataFrame logTable(const StringVector& log);

/// One table per column that has something in it.
DataFrameVector forFittedColumns(const Fitted& fitted, DataFrame (*table)(const FittedColumn&));

}  // namespace Tessel::SyntheticDataGeneration
