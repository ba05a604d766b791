#include <cstddef>
#include <cstdint>
#include <string_view>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>
#include <tessel/scoring/fitted_model.h>

namespace {

/// A tree over a number and a category.
constexpr wchar_t kModel[] =
    LR"(<PMML version="4.2"><Header description="TreeModel"/><DataDictionary>
<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="c d" optype="categorical" dataType="string"><Value value="a"/><Value value="b"/></DataField>
<DataField name="y" optype="continuous" dataType="double"/></DataDictionary>
<TreeModel functionName="regression" missingValueStrategy="defaultChild"><MiningSchema>
<MiningField name="y" usageType="predicted"/><MiningField name="x" usageType="active"/>
<MiningField name="c d" usageType="active"/></MiningSchema><Node id="1" score="1" defaultChild="2"><True/>
<Node id="2" score="2"><SimplePredicate field="x" operator="lessThan" value="0.5"/></Node>
<Node id="3" score="3"><SimplePredicate field="x" operator="greaterOrEqual" value="0.5"/></Node></Node>
</TreeModel></PMML>)";

}  // namespace

// Entry of a fuzzer for data that are scored as text, for example clang++ -fsanitize=fuzzer,address. Whatever
// the data, the outcome is a JSON text or a Tessel::Exception.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Tessel;
    try {
        const WString text = Convert::fromUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
        Scoring::FittedModel().score(kModel, text, 1, true);
    } catch (const Exception&) {
    }
    return 0;
}
