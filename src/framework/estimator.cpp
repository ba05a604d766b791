#include <tessel/framework/estimator.h>

#include "framework/estimatable.h"

namespace Tessel {

EstimatorHandle::EstimatorHandle(std::unique_ptr<IEstimatable> implementation)
    : implementation_(std::move(implementation)) {}
EstimatorHandle::EstimatorHandle(const EstimatorHandle& other)
    : implementation_(other.implementation_->clone()) {}
EstimatorHandle::~EstimatorHandle() = default;

EstimatorHandle& EstimatorHandle::operator=(const EstimatorHandle& other) {
    if (this != &other) implementation_ = other.implementation_->clone();
    return *this;
}

const WString& EstimatorHandle::getName() const { return implementation_->getName(); }
void EstimatorHandle::assignName(const WString& name) { implementation_->setName(name); }
void EstimatorHandle::setProgressCallback(ProgressCallback callback) {
    implementation_->progressCallback = std::move(callback);
}
void EstimatorHandle::reset() { implementation_->reset(); }
DataFrame EstimatorHandle::toDataFrame() const { return implementation_->toDataFrame(); }
DataFrameVector EstimatorHandle::toDataFrameVector() const { return implementation_->toDataFrameVector(); }
WString EstimatorHandle::toString() const { return toDataFrame().toString(); }
WString EstimatorHandle::toLadon() const { return implementation_->toLadon(); }

void EstimatorHandle::fromLadonString(const WString& text) {
    // A text that turns out bad half-way must not leave half of itself behind.
    std::unique_ptr<IEstimatable> read = implementation_->clone();
    read->fromLadonString(text);
    implementation_ = std::move(read);
}

}  // namespace Tessel
