// The engine boundary: everything that crosses between the class library and an engine.
#ifndef QUILLON_ENGINE_ENGINE_H
#define QUILLON_ENGINE_ENGINE_H

#include "engine/collection.h"
#include "engine/compute.h"
#include "engine/converter.h"
#include "engine/database.h"
#include "engine/folder.h"
#include "engine/formula.h"
#include "engine/fulltext.h"
#include "engine/idtable.h"
#include "engine/later.h"
#include "engine/memory.h"
#include "engine/number.h"
#include "engine/ods.h"
#include "engine/process.h"
#include "engine/render.h"
#include "engine/slate.h"
#include "engine/status.h"
#include "engine/text.h"
#include "engine/time.h"
#include "engine/types.h"
#include "engine/view.h"

#endif
