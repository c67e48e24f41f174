// Stored structures: conversion between host form (engine/records.h) and stored form, by structure code.
#ifndef QUILLON_ENGINE_ODS_H
#define QUILLON_ENGINE_ODS_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

// Bytes of one structure in its stored form, 0 for an unknown code.
ENG_API uint16_t EngOdsLength(uint16_t code);
// Reads `count` structures at *cursor into an array of host structures and moves the cursor behind them.
// The caller has checked that count * EngOdsLength(code) bytes are there. ENG_ERR_ODS_CODE changes nothing.
ENG_API ENGSTATUS EngOdsRead(void** cursor, uint16_t code, void* target, uint16_t count);
ENG_API ENGSTATUS EngOdsWrite(void** cursor, uint16_t code, const void* source, uint16_t count);

#ifdef __cplusplus
}
#endif

#endif
