#pragma once

// The toolbox of the data library: everything in namespace `Tessel::Util`.

#include <tessel/data/util/random.h>
#include <tessel/data/util/sets.h>
#include <tessel/data/util/tables.h>
