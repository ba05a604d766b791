#pragma once

#include <tessel/data/types.h>

// Models as PMML 4.2 text, which other programs score too.

namespace Tessel::PMML {

/// Columns that are scaled before a model sees them, by the map x -> (x - shift) * scale. A fitted scaler
/// (<tessel/scaler.h>) is one.
class TESSEL_API ColumnScaling {
 public:
    virtual ~ColumnScaling();
    /// False also for columns that it knows nothing of.
    virtual bool isScaled(const WString& column) const = 0;
    /// @throws NotAValidColName for a column that is not scaled.
    virtual double getShift(const WString& column) const = 0;
    virtual double getScale(const WString& column) const = 0;
};

/// Writes itself as PMML.
///
/// The standard has no cut-off for the probability of the class that counts as success. Decision trees label
/// their nodes by it; other classifiers tell it in an extension, which this library reads, while other
/// programs choose the most probable class.
///
/// Categories reach the text as they are, so those that the format cannot hold are refused: a category with
/// a double quote or of blanks only, where the model names it in a list of categories, and control characters
/// anywhere.
class TESSEL_API Exportable {
 public:
    virtual ~Exportable();

    /// @throws ConstraintViolation for a name or category that PMML cannot hold.
    virtual WString toPMML() const = 0;
    /// The model preceded by the scaling of its inputs: for a model that was fitted on
    /// `scaler.transform(...)` the text takes the unscaled table.
    /// @throws ConstraintViolation as above, and when the model scales its inputs already.
    virtual WString toPMML(const ColumnScaling& scaler) const = 0;
    /// The same text to a file in UTF-8. A write that fails leaves no half-written file behind.
    /// @throws UnableToWriteFile
    virtual void toPMML(const WString& path) const;
    virtual void toPMML(const WString& path, const ColumnScaling& scaler) const;
};

/// Replaces its state by a PMML text. A text that cannot be read leaves the object unchanged.
class TESSEL_API Importable {
 public:
    virtual ~Importable();

    /// A large text is best moved in: reading works on a copy.
    /// @throws UnsupportedPMMLFormat with the reason, when the text is no PMML or of another kind of model.
    virtual void fromPMMLString(WString text) = 0;
    /// The same for a UTF-8 file, with or without byte-order mark.
    /// @throws FileNotFound, UnsupportedPMMLFormat
    virtual void fromPMMLFile(const WString& path);

    /// The content of a file. @throws FileNotFound, InvalidEncoding
    static WString fromPMMLFileToString(const WString& path);

    // What a text holds. The header's description names the model element, whose function tells the kind.
    // @throws UnsupportedPMMLFormat when the text is no PMML.
    static bool isClassifier(const WString& text);
    static bool isRegressor(const WString& text);
    static bool isPredictor(const WString& text);
    static bool isClusterizer(const WString& text);
    static bool isForecaster(const WString& text);
    static bool isTransformer(const WString& text);
};

}  // namespace Tessel::PMML
