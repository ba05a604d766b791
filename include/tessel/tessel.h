#pragma once

// The whole interface of the SDK, for programs that do not mind the compile time. Headers and sources of
// the SDK itself include what they use.

#include <tessel/bagging.h>
#include <tessel/boosting.h>
#include <tessel/data/convert.h>
#include <tessel/data/data_frame.h>
#include <tessel/data/data_frame_vector.h>
#include <tessel/data/errors.h>
#include <tessel/data/interfaces.h>
#include <tessel/data/matrix.h>
#include <tessel/data/reader.h>
#include <tessel/data/types.h>
#include <tessel/data/util.h>
#include <tessel/data/vectors.h>
#include <tessel/data/writer.h>
#include <tessel/decision_tree.h>
#include <tessel/ensemble.h>
#include <tessel/evaluator/evaluator.h>
#include <tessel/evaluator/metrics.h>
#include <tessel/find_best_model.h>
#include <tessel/framework/capabilities.h>
#include <tessel/framework/classifier.h>
#include <tessel/framework/errors.h>
#include <tessel/framework/estimator.h>
#include <tessel/framework/fitable.h>
#include <tessel/framework/json_model.h>
#include <tessel/framework/ladon.h>
#include <tessel/framework/pmml.h>
#include <tessel/framework/progress.h>
#include <tessel/framework/regressor.h>
#include <tessel/framework/supervised.h>
#include <tessel/framework/supervised_model.h>
#include <tessel/naive_bayes.h>
#include <tessel/random_trees.h>
#include <tessel/scaler.h>
#include <tessel/scoring/capi/table_functions.h>
#include <tessel/scoring/capi/tessel_c.h>
#include <tessel/scoring/facades.h>
#include <tessel/scoring/fitted_model.h>
#include <tessel/synthetic_data_generator.h>
