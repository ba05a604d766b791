#include "serialization/json/read.h"

namespace Tessel::JSONModel {

web::json::value fromNumericTable(const DataFrame& table) {
    std::vector<web::json::value> columns;
    for (int i = 0; i < table.getNumCols(); ++i) {
        web::json::value column = web::json::value::object(true);
        set(column, L"name", JSON::fromText(table.getColName(i)));
        set(column, L"values", fromNumbers(table(Util::all, i).toDoubleVector()));
        columns.push_back(std::move(column));
    }
    return web::json::value::array(std::move(columns));
}

DataFrame toNumericTable(const web::json::value& json, const char* memberName, const WString& tableName) {
    DataFrame table(tableName);
    for (const web::json::value& element : JSON::toArray(json, memberName)) {
        const JSON::Members column(element, "A column");
        table.append(DataFrameColumn(JSON::toText(column.at("name"), "name"),
                                     JSON::toVector(column.at("values"), "values")));
    }
    return table;
}

}  // namespace Tessel::JSONModel
