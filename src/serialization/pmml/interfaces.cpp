#include <utility>

#include <tessel/data/convert.h>
#include <tessel/data/util/tables.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/pmml.h>

#include "data/files.h"
#include "serialization/pmml/read.h"

namespace Tessel::PMML {
namespace {

template <class Test>
bool answers(const WString& text, Test test) {
    return translatingErrors([&] {
        const Document document = parsed(text);
        return (document.*test)();
    });
}

}  // namespace

ColumnScaling::~ColumnScaling() = default;

Exportable::~Exportable() = default;
void Exportable::toPMML(const WString& path) const { Files::writeBytes(path, Convert::toUtf8(toPMML())); }
void Exportable::toPMML(const WString& path, const ColumnScaling& scaler) const {
    Files::writeBytes(path, Convert::toUtf8(toPMML(scaler)));
}

Importable::~Importable() = default;
void Importable::fromPMMLFile(const WString& path) {
    WString text;
    try {
        text = fromPMMLFileToString(path);
    } catch (const InvalidEncoding& error) {
        throw UnsupportedPMMLFormat(error.what());
    }
    fromPMMLString(std::move(text));
}
WString Importable::fromPMMLFileToString(const WString& path) { return Util::readFile(path); }

bool Importable::isClassifier(const WString& text) { return answers(text, &Document::isClassifier); }
bool Importable::isRegressor(const WString& text) { return answers(text, &Document::isRegressor); }
bool Importable::isPredictor(const WString& text) { return answers(text, &Document::isPredictor); }
bool Importable::isClusterizer(const WString& text) { return answers(text, &Document::isClusterizer); }
bool Importable::isForecaster(const WString& text) { return answers(text, &Document::isForecaster); }
bool Importable::isTransformer(const WString& text) { return answers(text, &Document::isTransformer); }

}  // namespace Tessel::PMML
