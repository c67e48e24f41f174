// Everything a client of the class library needs.
#ifndef QUILLON_VQ_VQ_H
#define QUILLON_VQ_VQ_H

#include "vq/frame/objlist.h"
#include "vq/frame/session.h"
#include "vq/frame/status.h"
#include "vq/frame/vqcommon.h"
#include "vq/frame/vqmblock.h"
#include "vq/richtext/font.h"
#include "vq/richtext/fonttable.h"
#include "vq/richtext/vqparstl.h"
#include "vq/richtext/vqrtbody.h"
#include "vq/richtext/vqrtchar.h"
#include "vq/richtext/vqrtcrsr.h"
#include "vq/richtext/vqrtobj.h"
#include "vq/richtext/vqstyltx.h"
#include "vq/richtext/vqunits.h"
#include "vq/store/vqcreate.h"
#include "vq/store/vqdbbody.h"
#include "vq/store/vqitem.h"
#include "vq/store/vqslate.h"
#include "vq/values/vqdtime.h"
#include "vq/values/vqdts.h"
#include "vq/values/vqintl.h"
#include "vq/values/vqnumber.h"
#include "vq/values/vqstring.h"
#include "vq/values/vqtext.h"

#endif
