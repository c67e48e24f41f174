// The operations of engine/later.h: each tells the caller which one it is.
#include "engine/later.h"

#include "engine/status.h"
#include "qcore/abi/later.h"

namespace {

constexpr const char* kNames[] = {
    "",
    "EngSlateAppendObjectItem",
    "EngSlateCompute",
    "EngSlateEncrypt",
    "EngSlateDecrypt",
    "EngSlateSign",
    "EngSlateUnsign",
    "EngSlateCreateTemp",
    "EngSlateRenderAppend",
    "EngSlateRenderClose",
    "EngSlateRenderFinish",
    "EngSlateRenderOpenStyle",
    "EngSlateRenderToItem",
    "EngDbGetUnreadTable",
    "EngServerCommand",
    "EngServerIsReachable",
    "EngServerList",
    "EngReplicate",
    "EngSchedFreeTimeSearch",
    "EngCollectionClose",
    "EngCollectionFind",
    "EngCollectionOpen",
    "EngCollectionRead",
    "EngCollectionTranslateSpecial",
    "EngCollectionUpdate",
    "EngFolderClose",
    "EngFolderCopy",
    "EngFolderCreate",
    "EngFolderDocAdd",
    "EngFolderDocRemove",
    "EngFolderDocRemoveAll",
    "EngFolderRename",
    "EngFtClose",
    "EngFtOpen",
    "EngFtSearch",
    "EngFormulaCompile",
    "EngFormulaComputeStart",
    "EngFormulaComputeStop",
    "EngFormulaDecompile",
    "EngFormulaEvaluate",
    "EngFormulaGetInfo",
    "EngFormulaRelease",
    "EngAgentClose",
    "EngAgentCreateRunContext",
    "EngAgentDestroyRunContext",
    "EngAgentGetRunOutput",
    "EngAgentOpen",
    "EngAgentRedirectOutput",
    "EngAgentRun",
    "EngAgentSetDocumentContext",
    "EngAclAddEntry",
    "EngAclDeleteEntry",
    "EngAclEnumEntries",
    "EngAclGetAdminServer",
    "EngAclGetFlags",
    "EngAclGetPrivilegeName",
    "EngAclOpen",
    "EngAclSetAdminServer",
    "EngAclSetFlags",
    "EngAclSetPrivilegeName",
    "EngAclStore",
    "EngAclUpdateEntry",
    "EngNameAbbreviate",
    "EngNameCanonicalize",
    "EngCertClose",
    "EngCertCrossCertify",
    "EngCertGetIDInfo",
    "EngCertRecertify",
    "EngCertRegister",
    "EngQueueCreate",
    "EngQueueGet",
    "EngQueueOpen",
    "EngQueuePut",
    "EngLogAppendNumber",
    "EngLogAppendText",
    "EngLogAppendTime",
    "EngAddinCreateStatusLine",
    "EngAddinGetDefaultStatusLine",
    "EngAddinHaveElapsed",
    "EngAddinIdle",
    "EngAddinIdleWait",
    "EngAddinIsNewDay",
    "EngAddinLogMessage",
    "EngAddinSetDefaultStatusLine",
    "EngAddinSetStatusLine",
    "EngAddinSetText",
    "EngAddinShouldTerminate",
    "EngColorToLegacy",
};
static_assert(sizeof(kNames) / sizeof(kNames[0]) == EngLater_End);

ENGSTATUS NotAvailable(EngLaterNumber number) { return static_cast<ENGSTATUS>(ENG_ERR_NOT_AVAILABLE + number); }

}  // namespace

namespace qcore {

const char* LaterOperationName(ENGSTATUS status) {
  const int number = (status & ENG_ERROR_MASK) - ENG_ERR_NOT_AVAILABLE;
  return number > 0 && number < EngLater_End ? kNames[number] : nullptr;
}

}  // namespace qcore

ENGSTATUS EngSlateEncrypt(ENGHANDLE, uint16_t, ENGHANDLE*) { return NotAvailable(EngLater_SlateEncrypt); }
ENGSTATUS EngSlateDecrypt(ENGHANDLE, uint16_t) { return NotAvailable(EngLater_SlateDecrypt); }
ENGSTATUS EngSlateSign(ENGHANDLE) { return NotAvailable(EngLater_SlateSign); }
ENGSTATUS EngSlateUnsign(ENGHANDLE) { return NotAvailable(EngLater_SlateUnsign); }
ENGSTATUS EngServerCommand(const ENGCHAR*, const ENGCHAR*, ENGHANDLE*, uint32_t*) {
  return NotAvailable(EngLater_ServerCommand);
}
ENGSTATUS EngServerIsReachable(const ENGCHAR*) { return NotAvailable(EngLater_ServerIsReachable); }
ENGSTATUS EngServerList(const ENGCHAR*, ENGHANDLE*) { return NotAvailable(EngLater_ServerList); }
ENGSTATUS EngReplicate(const ENGCHAR*, const ENGCHAR*, uint32_t, uint16_t, const ENGCHAR*, void*) {
  return NotAvailable(EngLater_Replicate);
}
ENGSTATUS EngSchedFreeTimeSearch(uint32_t, uint32_t, uint32_t, uint32_t, const TIMEDATE_PAIR*, uint16_t, const void*,
                                 ENGHANDLE*) {
  return NotAvailable(EngLater_SchedFreeTimeSearch);
}
ENGSTATUS EngAgentClose(ENGHANDLE) { return NotAvailable(EngLater_AgentClose); }
ENGSTATUS EngAgentCreateRunContext(ENGHANDLE, uint32_t, ENGHANDLE*) {
  return NotAvailable(EngLater_AgentCreateRunContext);
}
ENGSTATUS EngAgentDestroyRunContext(ENGHANDLE) { return NotAvailable(EngLater_AgentDestroyRunContext); }
ENGSTATUS EngAgentGetRunOutput(ENGHANDLE, ENGHANDLE*, uint32_t*) { return NotAvailable(EngLater_AgentGetRunOutput); }
ENGSTATUS EngAgentOpen(ENGHANDLE, uint32_t, ENGHANDLE*) { return NotAvailable(EngLater_AgentOpen); }
ENGSTATUS EngAgentRedirectOutput(ENGHANDLE, uint16_t) { return NotAvailable(EngLater_AgentRedirectOutput); }
ENGSTATUS EngAgentRun(ENGHANDLE, ENGHANDLE, uint32_t, uint32_t) { return NotAvailable(EngLater_AgentRun); }
ENGSTATUS EngAgentSetDocumentContext(ENGHANDLE, ENGHANDLE) { return NotAvailable(EngLater_AgentSetDocumentContext); }
ENGSTATUS EngAclAddEntry(ENGHANDLE, const ENGCHAR*, uint16_t, const void*, uint16_t) {
  return NotAvailable(EngLater_AclAddEntry);
}
ENGSTATUS EngAclDeleteEntry(ENGHANDLE, const ENGCHAR*) { return NotAvailable(EngLater_AclDeleteEntry); }
ENGSTATUS EngAclEnumEntries(ENGHANDLE, void*, void*) { return NotAvailable(EngLater_AclEnumEntries); }
ENGSTATUS EngAclGetAdminServer(ENGHANDLE, ENGCHAR*) { return NotAvailable(EngLater_AclGetAdminServer); }
ENGSTATUS EngAclGetFlags(ENGHANDLE, uint32_t*) { return NotAvailable(EngLater_AclGetFlags); }
ENGSTATUS EngAclGetPrivilegeName(ENGHANDLE, uint16_t, ENGCHAR*) { return NotAvailable(EngLater_AclGetPrivilegeName); }
ENGSTATUS EngAclOpen(ENGHANDLE, ENGHANDLE*) { return NotAvailable(EngLater_AclOpen); }
ENGSTATUS EngAclSetAdminServer(ENGHANDLE, const ENGCHAR*) { return NotAvailable(EngLater_AclSetAdminServer); }
ENGSTATUS EngAclSetFlags(ENGHANDLE, uint32_t) { return NotAvailable(EngLater_AclSetFlags); }
ENGSTATUS EngAclSetPrivilegeName(ENGHANDLE, uint16_t, const ENGCHAR*) {
  return NotAvailable(EngLater_AclSetPrivilegeName);
}
ENGSTATUS EngAclStore(ENGHANDLE, ENGHANDLE) { return NotAvailable(EngLater_AclStore); }
ENGSTATUS EngAclUpdateEntry(ENGHANDLE, const ENGCHAR*, uint16_t, const ENGCHAR*, uint16_t, const void*, uint16_t) {
  return NotAvailable(EngLater_AclUpdateEntry);
}
ENGSTATUS EngNameAbbreviate(uint32_t, const ENGCHAR*, const ENGCHAR*, ENGCHAR*, uint16_t, uint16_t*) {
  return NotAvailable(EngLater_NameAbbreviate);
}
ENGSTATUS EngNameCanonicalize(uint32_t, const ENGCHAR*, const ENGCHAR*, ENGCHAR*, uint16_t, uint16_t*) {
  return NotAvailable(EngLater_NameCanonicalize);
}
ENGSTATUS EngCertClose(ENGHANDLE, ENGHANDLE) { return NotAvailable(EngLater_CertClose); }
ENGSTATUS EngCertCrossCertify(ENGHANDLE, const char*, const void*) { return NotAvailable(EngLater_CertCrossCertify); }
ENGSTATUS EngCertGetIDInfo(const char*, uint16_t, void*, uint16_t, uint16_t*) {
  return NotAvailable(EngLater_CertGetIDInfo);
}
ENGSTATUS EngCertRecertify(ENGHANDLE, const char*, const TIMEDATE*, const void*) {
  return NotAvailable(EngLater_CertRecertify);
}
ENGSTATUS EngCertRegister(uint16_t, ENGHANDLE, const void*) { return NotAvailable(EngLater_CertRegister); }
ENGSTATUS EngQueueCreate(const ENGCHAR*, uint16_t, ENGHANDLE*) { return NotAvailable(EngLater_QueueCreate); }
ENGSTATUS EngQueueGet(ENGHANDLE, uint32_t, void*, uint16_t, uint16_t*) { return NotAvailable(EngLater_QueueGet); }
ENGSTATUS EngQueueOpen(const ENGCHAR*, ENGHANDLE*) { return NotAvailable(EngLater_QueueOpen); }
ENGSTATUS EngQueuePut(ENGHANDLE, const void*, uint16_t, uint16_t) { return NotAvailable(EngLater_QueuePut); }
ENGSTATUS EngLogAppendNumber(ENGHANDLE, uint16_t, const ENGCHAR*, const double*) {
  return NotAvailable(EngLater_LogAppendNumber);
}
ENGSTATUS EngLogAppendText(ENGHANDLE, uint16_t, const ENGCHAR*, const ENGCHAR*) {
  return NotAvailable(EngLater_LogAppendText);
}
ENGSTATUS EngLogAppendTime(ENGHANDLE, uint16_t, const ENGCHAR*, const TIMEDATE*) {
  return NotAvailable(EngLater_LogAppendTime);
}
ENGSTATUS EngAddinCreateStatusLine(const ENGCHAR*, ENGHANDLE*) { return NotAvailable(EngLater_AddinCreateStatusLine); }
ENGSTATUS EngAddinGetDefaultStatusLine(ENGHANDLE*) { return NotAvailable(EngLater_AddinGetDefaultStatusLine); }
ENGSTATUS EngAddinHaveElapsed(uint32_t, uint16_t, int*) { return NotAvailable(EngLater_AddinHaveElapsed); }
ENGSTATUS EngAddinIdle() { return NotAvailable(EngLater_AddinIdle); }
ENGSTATUS EngAddinIdleWait(uint32_t) { return NotAvailable(EngLater_AddinIdleWait); }
ENGSTATUS EngAddinIsNewDay(int*) { return NotAvailable(EngLater_AddinIsNewDay); }
ENGSTATUS EngAddinLogMessage(const ENGCHAR*, uint32_t, const ENGCHAR*) {
  return NotAvailable(EngLater_AddinLogMessage);
}
ENGSTATUS EngAddinSetDefaultStatusLine(ENGHANDLE, const ENGCHAR*) {
  return NotAvailable(EngLater_AddinSetDefaultStatusLine);
}
ENGSTATUS EngAddinSetStatusLine(ENGHANDLE, const ENGCHAR*, const ENGCHAR*) {
  return NotAvailable(EngLater_AddinSetStatusLine);
}
ENGSTATUS EngAddinSetText(const ENGCHAR*, const ENGCHAR*) { return NotAvailable(EngLater_AddinSetText); }
ENGSTATUS EngAddinShouldTerminate(int*) { return NotAvailable(EngLater_AddinShouldTerminate); }
