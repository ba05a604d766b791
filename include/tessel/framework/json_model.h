#pragma once

#include <tessel/data/types.h>

/// Models as JSON text: everything that this library needs to score and to report.
///
/// The root object says what it is by "type" (the kind of task) and "algorithm"; names, columns and
/// categories follow, then the members of the algorithm. NaN is written as null, infinities as the strings
/// "Infinity" and "-Infinity".
namespace Tessel::JSONModel {

/// Writes itself as JSON.
class TESSEL_API Exportable {
 public:
    virtual ~Exportable();
    virtual WString toJSON() const = 0;
    /// The same text to a file in UTF-8. A write that fails leaves no half-written file behind.
    /// @throws UnableToWriteFile
    virtual void toJSON(const WString& path) const;
};

/// Replaces its state by a JSON text. A text that cannot be read leaves the object unchanged.
class TESSEL_API Importable {
 public:
    virtual ~Importable();
    /// @throws UnsupportedJSONModel with the reason, when the text is no JSON or of another kind of model.
    virtual void fromJSONString(const WString& text) = 0;
    /// The same for a UTF-8 file, with or without byte-order mark.
    /// @throws FileNotFound, UnsupportedJSONModel
    virtual void fromJSONFile(const WString& path);

    /// The content of a file. @throws FileNotFound, InvalidEncoding
    static WString fromJSONFileToString(const WString& path);

    // What a text holds, by the member "type" of its root. @throws UnsupportedJSONModel when the text is no
    // JSON object with such a member.
    static bool isClassifier(const WString& text);
    static bool isRegressor(const WString& text);
    static bool isPredictor(const WString& text);
    static bool isClusterizer(const WString& text);
    static bool isForecaster(const WString& text);
    static bool isTransformer(const WString& text);
};

}  // namespace Tessel::JSONModel
