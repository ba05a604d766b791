#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include <tessel/data/data_frame.h>
#include <tessel/scoring/facades.h>

#include "data/lazy.h"
#include "scoring/model_info.h"

namespace Tessel::Plain {

/// A model text with everything that was read from it. What scores is loaded at the first use, so a model of
/// a family that cannot be loaded can still be asked what it is. Safe to use from several threads.
class StoredModel {
 public:
    /// @throws MalformedPMML, UnsupportedPMMLFormat
    explicit StoredModel(WString text);

    const WString& text() const { return text_; }
    const Scoring::ModelInfo& info() const { return info_; }
    /// In the order of `posteriors`; none when the model is no classifier that can be loaded.
    StringVector classes() const;

    // Scoring by the facade that the operation asks for. @throws UnsupportedPMMLFormat when it cannot load
    // the text, and what its scoring throws
    DataFrame predict(const DataFrame& input) const { return loaded(predictor_).predict(input); }
    DataFrame posteriors(const DataFrame& input) const {
        return loaded(predictor_).posteriorProbability(input);
    }
    DataFrame transform(const DataFrame& input) const { return loaded(transformer_).transform(input); }
    DataFrame fittedSeries(const DataFrame& input) const;
    DataFrame forecast(int horizon, const DataFrame& input) const;

 private:
    template <class Facade>
    const Facade& loaded(const Lazy<Facade>& facade) const {
        return facade.get([&] {
            Facade made;
            made.fromPMMLString(text_);
            return made;
        });
    }
    template <class Facade>
    void tryLoading(const Lazy<Facade>& facade, const PMML::Document& document);

    WString text_;
    Scoring::ModelInfo info_;
    Lazy<Scoring::Classifier> predictor_;
    Lazy<Scoring::Transformer> transformer_;
    Lazy<Scoring::Forecaster> forecaster_;
};

/// The models that the plain functions used last, and those that hosts keep loaded.
///
/// A text of the host is looked up by comparing it with the texts of the kept models, which ends at the first
/// difference. Neither address nor length nor a hash of parts would do: the host may have put another text
/// into the same memory. The text of a loaded model belongs to this library and is therefore known by its
/// address.
///
/// Models are shared: one that is evicted lives on until the last call that uses it has ended. Texts are
/// parsed and compared outside of the lock, so two threads that meet a new text at once may both parse it.
class ModelCache {
 public:
    using Pointer = std::shared_ptr<const StoredModel>;

    ModelCache(std::size_t maxModels, std::size_t maxBytes) : maxModels_(maxModels), maxBytes_(maxBytes) {}

    /// @throws ConstraintViolation for null, and what StoredModel throws
    Pointer get(const wchar_t* text);
    /// A model of its own, which `get` finds by the address of its text until `unload`.
    Pointer load(const wchar_t* text);
    void unload(const StoredModel& model);
    /// How many models are kept besides the loaded ones.
    std::size_t numKept() const;

 private:
    Pointer findLoaded(const wchar_t* text) const;
    Pointer findKept(const wchar_t* text);
    void touch(const Pointer& model);
    Pointer keep(const Pointer& model);

    mutable std::mutex mutex_;
    std::vector<Pointer> kept_;  // the one that was used last comes first
    std::unordered_map<const wchar_t*, Pointer> loaded_;
    std::size_t maxModels_, maxBytes_;
};

/// The cache of all plain functions.
ModelCache& storedModels();

}  // namespace Tessel::Plain
