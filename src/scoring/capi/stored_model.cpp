#include "scoring/capi/stored_model.h"

#include <algorithm>
#include <cwchar>

#include <tessel/data/convert.h>
#include <tessel/framework/errors.h>

#include "scoring/facades.h"
#include "serialization/pmml/read.h"

namespace Tessel::Plain {
namespace {

constexpr std::size_t kMaxModels = 8, kMaxBytes = std::size_t{256} << 20;

std::size_t bytesOf(const StoredModel& model) { return model.text().size() * sizeof(wchar_t); }

}  // namespace

template <class Facade>
void StoredModel::tryLoading(const Lazy<Facade>& facade, const PMML::Document& document) {
    try {
        facade.get([&]() -> Facade { return Scoring::FromDocument<Facade>(document); });
    } catch (const UnsupportedPMMLFormat&) {  // who wants to score will be told
    }
}

StoredModel::StoredModel(WString text) : text_(std::move(text)) {
    PMML::translatingErrors([&] {
        const PMML::Document document = PMML::parsed(text_);
        info_ = Scoring::ModelInfo::ofPMML(document);
        // Now that the text is parsed, the facade of the model's kind has its model at the least cost.
        if (document.isForecaster())
            tryLoading(forecaster_, document);
        else if (document.isTransformer())
            tryLoading(transformer_, document);
        else
            tryLoading(predictor_, document);
    });
}

StringVector StoredModel::classes() const {
    try {
        return loaded(predictor_).getClasses();
    } catch (const NotAClassifier&) {
    } catch (const UnsupportedPMMLFormat&) {
    }
    return StringVector();
}

DataFrame StoredModel::fittedSeries(const DataFrame& input) const {
    return loaded(forecaster_).transform(Convert::toTimeSeries(input));
}

DataFrame StoredModel::forecast(int horizon, const DataFrame& input) const {
    Scoring::Forecaster forecaster = loaded(forecaster_);  // shares the model, has its own horizon
    forecaster.setNumForecasts(horizon);
    return forecaster.forecast(Convert::toTimeSeries(input));
}

ModelCache& storedModels() {
    static ModelCache cache(kMaxModels, kMaxBytes);
    return cache;
}

ModelCache::Pointer ModelCache::findLoaded(const wchar_t* text) const {
    const std::lock_guard lock(mutex_);
    const auto found = loaded_.find(text);
    return found == loaded_.end() ? nullptr : found->second;
}

ModelCache::Pointer ModelCache::findKept(const wchar_t* text) {
    std::vector<Pointer> candidates;
    {
        const std::lock_guard lock(mutex_);
        candidates = kept_;
    }
    const auto equal = std::find_if(candidates.begin(), candidates.end(), [&](const Pointer& model) {
        return std::wcscmp(model->text().c_str(), text) == 0;
    });
    return equal == candidates.end() ? nullptr : *equal;
}

void ModelCache::touch(const Pointer& model) {
    const std::lock_guard lock(mutex_);
    const auto place = std::find(kept_.begin(), kept_.end(), model);
    if (place != kept_.end()) std::rotate(kept_.begin(), place, place + 1);
}

ModelCache::Pointer ModelCache::keep(const Pointer& model) {
    std::vector<Pointer> evicted;  // destroyed after the lock
    const std::lock_guard lock(mutex_);
    for (const Pointer& other : kept_)
        if (other->text() == model->text()) return other;  // another thread was faster
    kept_.insert(kept_.begin(), model);
    std::size_t bytes = 0, numFitting = 0;
    while (numFitting < std::min(kept_.size(), maxModels_) &&
           (bytes += bytesOf(*kept_[numFitting])) <= maxBytes_)
        ++numFitting;
    evicted.assign(kept_.begin() + static_cast<std::ptrdiff_t>(numFitting), kept_.end());
    kept_.resize(numFitting);
    return model;
}

ModelCache::Pointer ModelCache::get(const wchar_t* text) {
    if (!text) throw ConstraintViolation("Model text", "It is a null pointer.");
    if (Pointer model = findLoaded(text)) return model;
    const Pointer model = findKept(text);
    if (!model) return keep(std::make_shared<const StoredModel>(text));
    touch(model);
    return model;
}

ModelCache::Pointer ModelCache::load(const wchar_t* text) {
    if (!text) throw ConstraintViolation("Model text", "It is a null pointer.");
    Pointer model = std::make_shared<const StoredModel>(text);
    const std::lock_guard lock(mutex_);
    loaded_.emplace(model->text().c_str(), model);
    return model;
}

void ModelCache::unload(const StoredModel& model) {
    decltype(loaded_)::node_type removed;  // destroyed after the lock
    const std::lock_guard lock(mutex_);
    removed = loaded_.extract(model.text().c_str());
}

std::size_t ModelCache::numKept() const {
    const std::lock_guard lock(mutex_);
    return kept_.size();
}

}  // namespace Tessel::Plain
