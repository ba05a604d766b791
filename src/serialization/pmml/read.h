#pragma once

#include <new>
#include <stdexcept>
#include <utility>

#include <tessel/framework/errors.h>

#include "serialization/pmml/document.h"

namespace Tessel::PMML {

/// A parsed text. @throws rapidxml::parse_error, MalformedPMML for a text of nothing
inline Document parsed(WString text) {
    if (text.find_first_not_of(L" \t\r\n") == WString::npos) throw MalformedPMML("it is empty");
    Document document;
    document.parse(std::move(text));
    return document;
}

/// Runs a reader of foreign text. What it throws becomes UnsupportedPMMLFormat with the reason, a parser's
/// error MalformedPMML.
template <class Read>
auto translatingErrors(Read read) {
    try {
        return read();
    } catch (const UnsupportedPMMLFormat&) {
        throw;
    } catch (const rapidxml::parse_error& error) {
        throw MalformedPMML(error.what());
    } catch (const std::out_of_range&) {
        throw UnsupportedPMMLFormat("A required attribute is missing.");
    } catch (const Exception& error) {
        throw UnsupportedPMMLFormat(error.what());
    }
}

}  // namespace Tessel::PMML
