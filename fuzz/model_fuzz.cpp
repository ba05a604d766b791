#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/scoring/facades.h>

namespace {

using namespace Tessel;

template <class Work>
void attempt(Work work) {
    try {
        work();
    } catch (const Exception&) {
    }
}

/// A row of numbers and texts for whatever columns a model asks for.
DataFrame rowsFor(const StringVector& columns) {
    DataFrame table;
    bool isText = false;
    for (const WString& column : columns) {
        isText = !isText;
        if (isText)
            table.append(DataFrameColumn(column, StringVector{L"a", L"", L"b c"}));
        else
            table.append(DataFrameColumn(column, Vector{0.5, -1e300, 2}));
    }
    return table;
}

/// What was read scores, reports, and survives its own texts.
void use(const Scoring::Classifier& model) {
    attempt([&] {
        const DataFrame table = rowsFor(model.getColNames());
        attempt([&] { model.predict(table); });
        attempt([&] { model.posteriorProbability(table); });
    });
    attempt([&] { model.toDataFrameVector(); });
    attempt([&] { model.toPMML(); });
    const WString text = model.toJSON();
    Scoring::Classifier again;
    again.fromJSONString(text);
    if (again.toJSON() != text) std::abort();
}

}  // namespace

// Entry of a fuzzer for model texts, for example clang++ -fsanitize=fuzzer,address. Whatever the text, the
// outcome is a model that can be used or a Tessel::Exception.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Scoring::Classifier model;
    attempt([&] {
        const WString text = Convert::fromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
        attempt([&] { model.fromString(text); });
        attempt([&] { Scoring::Transformer().fromString(text); });
    });
    if (model.isLoaded()) use(model);
    return 0;
}
