#pragma once

// The whole interface of the SDK, for programs that do not mind the compile time. Headers and sources of
// the SDK itself include what they use.

#include <tessel/data/convert.h>
#include <tessel/data/data_frame.h>
#include <tessel/data/data_frame_vector.h>
#include <tessel/data/errors.h>
#include <tessel/data/interfaces.h>
#include <tessel/data/matrix.h>
#include <tessel/data/types.h>
#include <tessel/data/vectors.h>
