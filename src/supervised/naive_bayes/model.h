#pragma once

#include <vector>

#include "engine/nb/naive_bayes.h"
#include "framework/classification.h"

namespace Tessel::Classification::NaiveBayes {

inline constexpr wchar_t kModelName[] = L"Naive Bayes";

/// The columns of a table as the engine takes them.
std::vector<Engine::NB::Input> engineInputs(const FittedSchema& schema,
                                            const std::vector<FeatureColumn>& columns);

class IModel : public IModelable {
 public:
    explicit IModel(Engine::NB::Fitted fitted = {}) : IModelable(kModelName), fitted_(std::move(fitted)) {}

    const ModelType& type() const override;
    std::shared_ptr<Supervised::IModelable> blank() const override { return std::make_shared<IModel>(); }

 protected:
    void score(const std::vector<FeatureColumn>& columns, Posteriors& posteriors) const override;
    void describe(StringVector& labels, StringVector& values) const override;
    void report(DataFrameVector& tables) const override;

    void writeAttributes(PMML::ModelWriter& writer) const override;
    void writeBody(PMML::ModelWriter& writer) const override;
    void readBody(const PMML::ModelReader& reader) override;
    void writeBody(web::json::value& model) const override;
    void readBody(const JSON::Members& model) override;

 private:
    /// Checks what was read from a text. @throws ConstraintViolation
    void checkFitted() const;
    /// What the classes are multiplied by so that the greater product chooses like the cut-off.
    std::vector<double> voteFactors() const;

    Engine::NB::Fitted fitted_;
};

}  // namespace Tessel::Classification::NaiveBayes
