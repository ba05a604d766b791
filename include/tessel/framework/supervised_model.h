#pragma once

#include <memory>

#include <tessel/data/data_frame_vector.h>
#include <tessel/framework/supervised.h>

namespace Tessel {
namespace Supervised {
class IModelable;  // private: the implementation of any fitted supervised model
}

/// What the handles of fitted classifiers and of fitted regressors have in common. Copies share the fitted
/// model; moving copies too, so that there is never a handle without a model.
/// @tparam Interface  what the kind of model offers: a `Modelable` of supervised.h.
template <class Interface>
class SupervisedModel : public Interface {
 public:
    ~SupervisedModel() override;

    const WString& getName() const override;
    const WString& getModelName() const override;
    StringVector getColNames() const override;
    StringVector getIndexColNames() const override;
    const WString& getTargetColName() const override;
    const PMML::ColumnScaling& getInputScaling() const override;
    /// Names of the training rows; none after reading a PMML text, which does not tell them.
    StringVector getRowNames() const;

    /// Model summary, the tables of the kind and of the family, training summary.
    DataFrameVector toDataFrameVector() const override;
    /// Those tables as text.
    WString toString() const override;

    // The texts. Reading gives this handle a model of its own; others that shared its model keep theirs.
    using JSONModel::Exportable::toJSON;
    using Ladon::Exportable::toLadon;
    using PMML::Exportable::toPMML;
    WString toJSON() const override;
    WString toPMML() const override;
    WString toPMML(const PMML::ColumnScaling& scaler) const override;
    WString toLadon() const override;
    void fromJSONString(const WString& text) override;
    void fromPMMLString(WString text) override;
    void fromLadonString(const WString& text) override;

 protected:
    explicit SupervisedModel(std::shared_ptr<Supervised::IModelable> implementation);
    SupervisedModel(const SupervisedModel&);
    SupervisedModel& operator=(const SupervisedModel&);

    /// The implementation as the kind's or the family's own class.
    template <class Implementation>
    Implementation& as() const {
        return static_cast<Implementation&>(*implementation_);
    }

 private:
    void assignName(const WString& name) override;
    void assignModelName(const WString& modelName) override;

    std::shared_ptr<Supervised::IModelable> implementation_;
};

extern template class TESSEL_API SupervisedModel<Supervised::Classification::Modelable>;
extern template class TESSEL_API SupervisedModel<Supervised::Regression::Modelable>;

}  // namespace Tessel
