#pragma once

#include <tessel/data/types.h>

// What objects of the data library and of the SDK can be asked for. The interfaces hold no state.

namespace Tessel {

/// Has a name that its user sets. Setters of interfaces call a private virtual function, so that a class
/// can hide them by setters that return the class itself and chain.
class TESSEL_API Identifiable {
 public:
    virtual ~Identifiable();
    virtual const WString& getName() const = 0;
    Identifiable& setName(const WString& name) {
        assignName(name);
        return *this;
    }

 private:
    virtual void assignName(const WString& name) = 0;
};

/// Describes itself as text for people.
class TESSEL_API StringExportable {
 public:
    virtual ~StringExportable();
    virtual WString toString() const = 0;
};

/// Describes itself as one table.
class TESSEL_API DataFrameExportable {
 public:
    virtual ~DataFrameExportable();
    virtual DataFrame toDataFrame() const = 0;
};

/// Describes itself as titled tables.
class TESSEL_API DataFrameVectorExportable {
 public:
    virtual ~DataFrameVectorExportable();
    virtual DataFrameVector toDataFrameVector() const = 0;
};

namespace JSON {

/// Writes itself as JSON text.
class TESSEL_API StringExportable {
 public:
    virtual ~StringExportable();
    virtual WString toJson() const = 0;
};

/// Replaces its state by the one in a JSON text.
class TESSEL_API StringImportable {
 public:
    virtual ~StringImportable();
    virtual void fromJsonString(const WString& json) = 0;
};

}  // namespace JSON
}  // namespace Tessel
