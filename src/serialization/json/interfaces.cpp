#include <tessel/data/convert.h>
#include <tessel/data/util/tables.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/json_model.h>
#include <tessel/framework/ladon.h>

#include "data/files.h"
#include "serialization/json/read.h"

namespace Tessel {
namespace {

/// The member "type" of the root of a JSON model or of a `Ladon` object.
WString kindOf(const WString& text) {
    return JSONModel::translatingErrors([&] {
        const web::json::value value = JSON::parse(text);
        return JSON::toText(JSON::Members(value, "A model").at("type"), "type");
    });
}

bool isKind(const WString& text, const WString& kind) { return kindOf(text) == kind; }

bool isPredictorText(const WString& text) {
    const WString kind = kindOf(text);
    return kind == Ladon::TaskKind::CLASSIFICATION || kind == Ladon::TaskKind::REGRESSION;
}
bool isTransformerText(const WString& text) {
    const WString kind = kindOf(text);
    return kind == Ladon::TaskKind::TRANSFORMATION || kind == Ladon::TaskKind::TEXT_MINING;
}

WString textOfFile(const WString& path) {
    try {
        return Util::readFile(path);
    } catch (const InvalidEncoding& error) {
        throw UnsupportedJSONModel(error.what());
    }
}

}  // namespace

namespace JSONModel {

Exportable::~Exportable() = default;
void Exportable::toJSON(const WString& path) const { Files::writeBytes(path, Convert::toUtf8(toJSON())); }

Importable::~Importable() = default;
void Importable::fromJSONFile(const WString& path) { fromJSONString(textOfFile(path)); }
WString Importable::fromJSONFileToString(const WString& path) { return Util::readFile(path); }

bool Importable::isClassifier(const WString& text) { return isKind(text, Ladon::TaskKind::CLASSIFICATION); }
bool Importable::isRegressor(const WString& text) { return isKind(text, Ladon::TaskKind::REGRESSION); }
bool Importable::isPredictor(const WString& text) { return isPredictorText(text); }
bool Importable::isClusterizer(const WString& text) { return isKind(text, Ladon::TaskKind::CLUSTERING); }
bool Importable::isForecaster(const WString& text) { return isKind(text, Ladon::TaskKind::TIME_SERIES); }
bool Importable::isTransformer(const WString& text) { return isTransformerText(text); }

}  // namespace JSONModel

namespace Ladon {

Exportable::~Exportable() = default;
void Exportable::toLadon(const WString& path) const { Files::writeBytes(path, Convert::toUtf8(toLadon())); }

Importable::~Importable() = default;
void Importable::fromLadonFile(const WString& path) { fromLadonString(textOfFile(path)); }

bool Importable::isClassifier(const WString& text) { return isKind(text, TaskKind::CLASSIFICATION); }
bool Importable::isRegressor(const WString& text) { return isKind(text, TaskKind::REGRESSION); }
bool Importable::isPredictor(const WString& text) { return isPredictorText(text); }
bool Importable::isClusterizer(const WString& text) { return isKind(text, TaskKind::CLUSTERING); }
bool Importable::isForecaster(const WString& text) { return isKind(text, TaskKind::TIME_SERIES); }
bool Importable::isTransformer(const WString& text) { return isTransformerText(text); }

}  // namespace Ladon
}  // namespace Tessel
