#pragma once

#include <new>
#include <stdexcept>

#include <tessel/framework/errors.h>

#include "serialization/pmml/document.h"

namespace Tessel::PMML {

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
