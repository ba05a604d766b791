#pragma once

// The toolbox of the data library: one header per room.

#include <tessel/data/util/association.h>
#include <tessel/data/util/error_measures.h>
#include <tessel/data/util/random.h>
#include <tessel/data/util/sets.h>
#include <tessel/data/util/statistics.h>
#include <tessel/data/util/tables.h>
