#pragma once

#include <tessel/data/types.h>

namespace Tessel {

/// Carries an object's own name, set by the user, and the name of its kind of model.
class IIdentifiable {
 public:
    explicit IIdentifiable(WString name) : name_(std::move(name)) {}
    virtual ~IIdentifiable() = default;

    const WString& getName() const { return name_; }
    void setName(const WString& name) { name_ = name; }
    const WString& getModelName() const { return modelName_; }
    void setModelName(const WString& modelName) { modelName_ = modelName; }

 protected:
    IIdentifiable(const IIdentifiable&) = default;
    IIdentifiable& operator=(const IIdentifiable&) = default;

 private:
    WString name_;
    WString modelName_;
};

}  // namespace Tessel
