#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include <tessel/data/convert.h>
#include <tessel/data/errors.h>

#include "serialization/pmml/document.h"

namespace {

using namespace Tessel;
using PMML::Document;
using PMML::Node;

template <class Read>
void attempt(Read read) {
    try {
        read();
    } catch (const Exception&) {
    } catch (const std::out_of_range&) {
    }
}

/// Asks everything that can be asked of one element.
void readElement(const Node* node) {
    attempt([&] { Document::getText(node); });
    attempt([&] { Document::getAllAttributes(node); });
    attempt([&] { Document::getDoubleArray(node); });
    attempt([&] { Document::getIntArray(node); });
    attempt([&] { Document::getStringArray(node); });
    attempt([&] { Document::getMatrix(node, Vector{1, 2, 3}); });
    attempt([&] { Document::getLinearNormPoint(node); });
    attempt([&] { Document::getPriorProbs(node); });
}

void readDocument(const Document& document) {
    attempt([&] { document.getPMMLModelName(); });
    attempt([&] { document.isPredictor(); });
    attempt([&] { document.getTargetColType(); });
    attempt([&] { document.getFeatureNames(); });
    attempt([&] { document.getActiveFeatureTypes(); });
    attempt([&] { document.getUnsupervisedFeatureOpTypes(); });
    attempt([&] { document.getMetadata(); });
    const Node* node = document.getRoot();
    while (node) {
        readElement(node);
        const Node* next = node->first_node();
        while (!next && node != document.getRoot()) {
            next = node->next_sibling();
            node = node->parent();
        }
        node = next;
    }
}

}  // namespace

// Entry of a fuzzer for PMML texts. The outcome is a document that can be read, copied and printed, or an
// error of the parser; what is printed can be parsed again.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Document document;
    try {
        document.parse(Convert::fromUtf8(std::string_view(reinterpret_cast<const char*>(data), size)));
    } catch (const rapidxml::parse_error&) {
        return 0;
    } catch (const Exception&) {
        return 0;
    }
    readDocument(document);
    attempt([&] {
        Document copy;
        if (document.getRoot()) copy.appendNode(copy.clone(document.getRoot()));
        const WString text = copy.toString();
        try {
            copy.parse(text);
        } catch (const rapidxml::parse_error&) {
            std::abort();
        }
    });
    return 0;
}
