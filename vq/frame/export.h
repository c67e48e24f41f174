// Marks what the shared library shows.
#ifndef QUILLON_VQ_FRAME_EXPORT_H
#define QUILLON_VQ_FRAME_EXPORT_H

#if defined(__GNUC__)
#define VQ_API __attribute__((visibility("default")))
#else
#define VQ_API
#endif

#endif
