#include "models.h"

#include <map>

#include "terminal.h"

namespace Tessel::Cli {

LoadedModel loadModel(const std::string& path) { return modelOf(readAll(path), sourceName(path)); }

LoadedModel modelOf(const std::string& text, const std::string& source) {
    LoadedModel model;
    try {
        model.fromString(Convert::fromUtf8(text));
    } catch (const Exception& error) {
        throw Failure(source + ": is no model that can be read. " + error.what());
    }
    return model;
}

void setClassRule(LoadedModel& model, const std::string& successClass, const std::optional<double>& cutOff) {
    if (!successClass.empty()) model.setSuccessClass(Convert::fromUtf8(successClass));
    if (cutOff) model.setSuccessProbability(*cutOff);
}

std::string modelFormat(const std::string& path, const std::string& as) {
    if (!as.empty()) return as;
    if (path.empty() || path == "-") return "pmml";
    if (path.ends_with(".pmml") || path.ends_with(".xml")) return "pmml";
    if (path.ends_with(".json")) return "json";
    if (path.ends_with(".ladon")) return "ladon";
    throw Failure(path +
                  ": the ending tells no format of models (.pmml, .xml, .json, .ladon); give it with --as");
}

DataFrame readFor(const LoadedModel& model, const DataSource& source, const std::string& name) {
    const StringVector categorical = model.getCategoricalColNames();
    DataFrame table = source.read();
    // Types were inferred from the cells. Where the model knows better, the file is read once more:
    // categories and identifiers keep their texts ("01"), and a cell that is no number is told with its
    // place.
    std::map<WString, TypeCode> types;
    for (const WString& column : model.getColNames()) {
        if (!table.isColumn(column))
            throw Failure(name + ": there is no column '" + Convert::toUtf8(column) +
                          "', which the model needs");
        const TypeCode type = categorical.exists(column) ? TypeCode::TEXT : TypeCode::NUMERIC;
        if (table.getTypeCode(column) != type) types[column] = type;
    }
    for (const WString& column : model.getIndexColNames())
        if (table.isColumn(column) && table.isNumeric(column)) types[column] = TypeCode::TEXT;
    return types.empty() ? table : source.read(types);
}

}  // namespace Tessel::Cli
