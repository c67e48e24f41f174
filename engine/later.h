// Operations that have their place but no engine behind them in this release.
//
// Each answers ENG_ERR_NOT_AVAILABLE plus its place in this file, counted from 1, looks at none of its arguments
// and changes nothing; EngStatusText names the operation. When an operation is built its declaration moves to its
// family's header; its line stays in EngLaterNumber, so that numbers do not shift.
#ifndef QUILLON_ENGINE_LATER_H
#define QUILLON_ENGINE_LATER_H

#include "engine/types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef enum EngLaterNumber {
  EngLater_SlateAppendObjectItem = 1,
  EngLater_SlateCompute = 2,
  EngLater_SlateEncrypt = 3,
  EngLater_SlateDecrypt = 4,
  EngLater_SlateSign = 5,
  EngLater_SlateUnsign = 6,
  EngLater_SlateCreateTemp = 7,
  EngLater_SlateRenderAppend = 8,
  EngLater_SlateRenderClose = 9,
  EngLater_SlateRenderFinish = 10,
  EngLater_SlateRenderOpenStyle = 11,
  EngLater_SlateRenderToItem = 12,
  EngLater_DbGetUnreadTable = 13,
  EngLater_ServerCommand = 14,
  EngLater_ServerIsReachable = 15,
  EngLater_ServerList = 16,
  EngLater_Replicate = 17,
  EngLater_SchedFreeTimeSearch = 18,
  EngLater_CollectionClose = 19,
  EngLater_CollectionFind = 20,
  EngLater_CollectionOpen = 21,
  EngLater_CollectionRead = 22,
  EngLater_CollectionTranslateSpecial = 23,
  EngLater_CollectionUpdate = 24,
  EngLater_FolderClose = 25,
  EngLater_FolderCopy = 26,
  EngLater_FolderCreate = 27,
  EngLater_FolderDocAdd = 28,
  EngLater_FolderDocRemove = 29,
  EngLater_FolderDocRemoveAll = 30,
  EngLater_FolderRename = 31,
  EngLater_FtClose = 32,
  EngLater_FtOpen = 33,
  EngLater_FtSearch = 34,
  EngLater_FormulaCompile = 35,
  EngLater_FormulaComputeStart = 36,
  EngLater_FormulaComputeStop = 37,
  EngLater_FormulaDecompile = 38,
  EngLater_FormulaEvaluate = 39,
  EngLater_FormulaGetInfo = 40,
  EngLater_FormulaRelease = 41,
  EngLater_AgentClose = 42,
  EngLater_AgentCreateRunContext = 43,
  EngLater_AgentDestroyRunContext = 44,
  EngLater_AgentGetRunOutput = 45,
  EngLater_AgentOpen = 46,
  EngLater_AgentRedirectOutput = 47,
  EngLater_AgentRun = 48,
  EngLater_AgentSetDocumentContext = 49,
  EngLater_AclAddEntry = 50,
  EngLater_AclDeleteEntry = 51,
  EngLater_AclEnumEntries = 52,
  EngLater_AclGetAdminServer = 53,
  EngLater_AclGetFlags = 54,
  EngLater_AclGetPrivilegeName = 55,
  EngLater_AclOpen = 56,
  EngLater_AclSetAdminServer = 57,
  EngLater_AclSetFlags = 58,
  EngLater_AclSetPrivilegeName = 59,
  EngLater_AclStore = 60,
  EngLater_AclUpdateEntry = 61,
  EngLater_NameAbbreviate = 62,
  EngLater_NameCanonicalize = 63,
  EngLater_CertClose = 64,
  EngLater_CertCrossCertify = 65,
  EngLater_CertGetIDInfo = 66,
  EngLater_CertRecertify = 67,
  EngLater_CertRegister = 68,
  EngLater_QueueCreate = 69,
  EngLater_QueueGet = 70,
  EngLater_QueueOpen = 71,
  EngLater_QueuePut = 72,
  EngLater_LogAppendNumber = 73,
  EngLater_LogAppendText = 74,
  EngLater_LogAppendTime = 75,
  EngLater_AddinCreateStatusLine = 76,
  EngLater_AddinGetDefaultStatusLine = 77,
  EngLater_AddinHaveElapsed = 78,
  EngLater_AddinIdle = 79,
  EngLater_AddinIdleWait = 80,
  EngLater_AddinIsNewDay = 81,
  EngLater_AddinLogMessage = 82,
  EngLater_AddinSetDefaultStatusLine = 83,
  EngLater_AddinSetStatusLine = 84,
  EngLater_AddinSetText = 85,
  EngLater_AddinShouldTerminate = 86,
  EngLater_ColorToLegacy = 87,
  EngLater_End
} EngLaterNumber;

// Slates: forms, encryption
ENG_API ENGSTATUS EngSlateEncrypt(ENGHANDLE slate, uint16_t flags, ENGHANDLE* encrypted);
ENG_API ENGSTATUS EngSlateDecrypt(ENGHANDLE slate, uint16_t flags);
ENG_API ENGSTATUS EngSlateSign(ENGHANDLE slate);
ENG_API ENGSTATUS EngSlateUnsign(ENGHANDLE slate);

// Servers and replication
ENG_API ENGSTATUS EngServerCommand(const ENGCHAR* server, const ENGCHAR* command, ENGHANDLE* reply,
                                   uint32_t* reply_size);
ENG_API ENGSTATUS EngServerIsReachable(const ENGCHAR* name);
ENG_API ENGSTATUS EngServerList(const ENGCHAR* port, ENGHANDLE* servers);
ENG_API ENGSTATUS EngReplicate(const ENGCHAR* server, const ENGCHAR* port, uint32_t options, uint16_t timeout,
                               const ENGCHAR* files, void* statistics);
ENG_API ENGSTATUS EngSchedFreeTimeSearch(uint32_t reserved1, uint32_t reserved2, uint32_t reserved3, uint32_t reserved4,
                                         const TIMEDATE_PAIR* range, uint16_t duration, const void* names,
                                         ENGHANDLE* result);

// Agents
ENG_API ENGSTATUS EngAgentClose(ENGHANDLE agent);
ENG_API ENGSTATUS EngAgentCreateRunContext(ENGHANDLE agent, uint32_t flags, ENGHANDLE* context);
ENG_API ENGSTATUS EngAgentDestroyRunContext(ENGHANDLE context);
ENG_API ENGSTATUS EngAgentGetRunOutput(ENGHANDLE context, ENGHANDLE* text, uint32_t* length);
ENG_API ENGSTATUS EngAgentOpen(ENGHANDLE db, uint32_t id, ENGHANDLE* agent);
ENG_API ENGSTATUS EngAgentRedirectOutput(ENGHANDLE context, uint16_t selector);
ENG_API ENGSTATUS EngAgentRun(ENGHANDLE agent, ENGHANDLE context, uint32_t reserved, uint32_t flags);
ENG_API ENGSTATUS EngAgentSetDocumentContext(ENGHANDLE context, ENGHANDLE slate);

// Access control lists
ENG_API ENGSTATUS EngAclAddEntry(ENGHANDLE list, const ENGCHAR* name, uint16_t level, const void* privileges,
                                 uint16_t flags);
ENG_API ENGSTATUS EngAclDeleteEntry(ENGHANDLE list, const ENGCHAR* name);
ENG_API ENGSTATUS EngAclEnumEntries(ENGHANDLE list, void* callback, void* context);
ENG_API ENGSTATUS EngAclGetAdminServer(ENGHANDLE list, ENGCHAR* buffer);
ENG_API ENGSTATUS EngAclGetFlags(ENGHANDLE list, uint32_t* flags);
ENG_API ENGSTATUS EngAclGetPrivilegeName(ENGHANDLE list, uint16_t slot, ENGCHAR* buffer);
ENG_API ENGSTATUS EngAclOpen(ENGHANDLE db, ENGHANDLE* list);
ENG_API ENGSTATUS EngAclSetAdminServer(ENGHANDLE list, const ENGCHAR* name);
ENG_API ENGSTATUS EngAclSetFlags(ENGHANDLE list, uint32_t flags);
ENG_API ENGSTATUS EngAclSetPrivilegeName(ENGHANDLE list, uint16_t slot, const ENGCHAR* name);
ENG_API ENGSTATUS EngAclStore(ENGHANDLE db, ENGHANDLE list);
ENG_API ENGSTATUS EngAclUpdateEntry(ENGHANDLE list, const ENGCHAR* name, uint16_t change, const ENGCHAR* new_name,
                                    uint16_t level, const void* privileges, uint16_t flags);

// Names, certifiers and identities
ENG_API ENGSTATUS EngNameAbbreviate(uint32_t flags, const ENGCHAR* pattern, const ENGCHAR* name, ENGCHAR* buffer,
                                    uint16_t size, uint16_t* length);
ENG_API ENGSTATUS EngNameCanonicalize(uint32_t flags, const ENGCHAR* pattern, const ENGCHAR* name, ENGCHAR* buffer,
                                      uint16_t size, uint16_t* length);
ENG_API ENGSTATUS EngCertClose(ENGHANDLE session, ENGHANDLE context);
ENG_API ENGSTATUS EngCertCrossCertify(ENGHANDLE certifier, const char* path, const void* strings);
ENG_API ENGSTATUS EngCertGetIDInfo(const char* path, uint16_t item, void* buffer, uint16_t size, uint16_t* length);
ENG_API ENGSTATUS EngCertRecertify(ENGHANDLE certifier, const char* path, const TIMEDATE* date, const void* strings);
ENG_API ENGSTATUS EngCertRegister(uint16_t kind, ENGHANDLE certifier, const void* strings);

// Message queues and log entries
ENG_API ENGSTATUS EngQueueCreate(const ENGCHAR* name, uint16_t limit, ENGHANDLE* queue);
ENG_API ENGSTATUS EngQueueGet(ENGHANDLE queue, uint32_t wait, void* buffer, uint16_t size, uint16_t* length);
ENG_API ENGSTATUS EngQueueOpen(const ENGCHAR* name, ENGHANDLE* queue);
ENG_API ENGSTATUS EngQueuePut(ENGHANDLE queue, const void* bytes, uint16_t length, uint16_t priority);
ENG_API ENGSTATUS EngLogAppendNumber(ENGHANDLE entry, uint16_t flags, const ENGCHAR* name, const double* value);
ENG_API ENGSTATUS EngLogAppendText(ENGHANDLE entry, uint16_t flags, const ENGCHAR* name, const ENGCHAR* value);
ENG_API ENGSTATUS EngLogAppendTime(ENGHANDLE entry, uint16_t flags, const ENGCHAR* name, const TIMEDATE* value);

// Server add-ins. The questions have their answer in *result.
ENG_API ENGSTATUS EngAddinCreateStatusLine(const ENGCHAR* name, ENGHANDLE* line);
ENG_API ENGSTATUS EngAddinGetDefaultStatusLine(ENGHANDLE* line);
ENG_API ENGSTATUS EngAddinHaveElapsed(uint32_t count, uint16_t unit, int* result);
ENG_API ENGSTATUS EngAddinIdle(void);
ENG_API ENGSTATUS EngAddinIdleWait(uint32_t count);
ENG_API ENGSTATUS EngAddinIsNewDay(int* result);
ENG_API ENGSTATUS EngAddinLogMessage(const ENGCHAR* format, uint32_t reserved, const ENGCHAR* text);
ENG_API ENGSTATUS EngAddinSetDefaultStatusLine(ENGHANDLE line, const ENGCHAR* name);
ENG_API ENGSTATUS EngAddinSetStatusLine(ENGHANDLE line, const ENGCHAR* format, const ENGCHAR* text);
ENG_API ENGSTATUS EngAddinSetText(const ENGCHAR* format, const ENGCHAR* text);
ENG_API ENGSTATUS EngAddinShouldTerminate(int* result);

#ifdef __cplusplus
}
#endif

#endif
