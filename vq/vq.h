// Everything a client of the class library needs.
#ifndef QUILLON_VQ_VQ_H
#define QUILLON_VQ_VQ_H

#include "vq/frame/objlist.h"
#include "vq/frame/session.h"
#include "vq/frame/status.h"
#include "vq/frame/vqcommon.h"
#include "vq/frame/vqmblock.h"
#include "vq/values/vqstring.h"

#endif
