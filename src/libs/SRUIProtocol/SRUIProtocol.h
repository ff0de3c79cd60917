#ifndef SERVICE_RECORD_UI_SRUI_PROTOCOL_H
#define SERVICE_RECORD_UI_SRUI_PROTOCOL_H

/*
 * The boundary between the agent and its UI plug-in "ServiceRecordUI.bundle": plain C, so that a module built
 * by another compiler, or written in another language, fits.
 *
 * The bundle's Info.plist names the module (CFBundleExecutable, a file name in the bundle's folder) and the
 * protocol it conforms to (SRConformsToProtocol, "SRUIProtocol"). The module defines one function,
 * ServiceRecordUIPrincipalClass. Once loaded it stays loaded until the process ends.
 *
 * Threads: every function here may be called on any thread, and several at once: each dialog runs on the
 * thread that asks and blocks only that thread. A module that needs a certain thread for its windows sees to
 * it itself. SIGTERM and SIGINT are blocked in all of them: a program that the module starts lets them
 * through again, or only SIGKILL ends it.
 *
 * Details: one dictionary as a NUL-terminated XML property list in UTF-8. The text belongs to the caller and
 * is good only during the call. No function throws, ends the process, or leaves a signal or a child process
 * behind.
 */

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define SRUI_PROTOCOL_VERSION 3u
#define SRUI_EXPORT __attribute__((visibility("default")))

/* What the agent offers the module. A later version only appends members. */
typedef struct SRUIHost {
  /* SRUI_PROTOCOL_VERSION of the agent. */
  uint32_t version;
  /*
   * Becomes readable, and stays so, when the agent is about to end: open dialogs close as declined then. Only
   * to be polled: never read, written or closed by the module. Open until the process ends.
   */
  int terminationDescriptor;

  /*
   * Since version 2. Both count for the dialogs that the calling thread asks until it calls
   * ServiceRecordUIPrincipalClass again, and stay open until then.
   *
   * The terminal on which they are to be asked, open for reading and writing; -1: the module chooses where.
   */
  int terminalDescriptor;
  /*
   * Like terminationDescriptor, but for these questions only: becomes readable when nobody wants their answer
   * any more. -1: never.
   */
  int withdrawalDescriptor;

  /*
   * Since version 3, and for the same dialogs, but read during the call only: the desktop on which they are
   * to be asked where there is no terminalDescriptor. Variables of a program's environment, each
   * "NAME=value", with a null pointer behind the last, which stand in place of all of that kind in the
   * module's own. NULL, or none: the module chooses.
   */
  const char* const* desktop;
} SRUIHost;

/* What addStore and replaceStore return when nobody could be asked; since version 2. */
#define SRUI_COULD_NOT_ASK (-1)

/*
 * The entry points, none of them NULL. A later version only appends members.
 *
 * Each dictionary holds the keys named at the entry point. Since version 2 there may be further ones, which a
 * module may pass over: OpeningID (integer, the same for all dialogs of one opened document) and DocumentPath
 * (string) for every dialog, and what stands at each entry point under "may hold". Strings unless said.
 */
typedef struct SRUIProtocol {
  /* SRUI_PROTOCOL_VERSION of the module. */
  uint32_t version;

  /*
   * Asks whether a new store is trusted. Keys: StoreName, StoreProvider (who operates the server that was
   * verified), CertificateName (who issued its certificate), StoreURL; StoreGateways (array, missing when
   * empty) of dictionaries with GatewayName, GatewayURL and IsDefault (boolean). May hold StoreHost (as
   * people write it), StoreHostASCII (only where it differs), VerifiedHost, VerifiedHostASCII (both
   * likewise), VerifiedServer ("gateway" or "store") and DefaultGatewayWithoutURL (the name of a default
   * gateway that has no address, which StoreGateways leaves out). Returns 1 when the user accepts; 0 when the
   * user declines, the question is withdrawn or the agent is about to end; SRUI_COULD_NOT_ASK. Anything but 1
   * is no consent.
   */
  int (*addStore)(const char* details);

  /*
   * Asks whether a known store is replaced. Key: StoreName. May hold HeldStore and NewStore: the store in the
   * list, and what the replacement would make of it, which keeps what the new record does not name. They are
   * dictionaries with StoreName, StoreURL, StoreHost, StoreHostASCII and StoreGateways as for addStore, and
   * InternalBeacons and ExternalBeacons (arrays of strings). Their gateways may hold the integers
   * GatewayAuthType (0 RSA, 1 none, 2 domain, 3 domain and RSA, 4 SMS, 5 the gateway knows), GatewayEdition
   * (0 standard, 1 advanced, 2 enterprise) and GatewayRewriteMode (0 NONE, 1 SG_RW, 2 FB_RW, 3 ENTCVPN_RW).
   * Result as for addStore.
   */
  int (*replaceStore)(const char* details);

  /*
   * Shows a message and returns without waiting for the user; on the host's terminalDescriptor, only once it
   * stands there, which may be behind another dialog's question. Keys: ErrorTitle, ErrorMessage. May hold
   * StoreName and Server (host[:port]) that it is about, ErrorReason (one more sentence: why, or what holds
   * all the same; what somebody else wrote ends it, on a line of its own) and ErrorDetails (for those who are
   * to help).
   */
  void (*errorMessage)(const char* details);

  /*
   * A view of the store for clients that load the module into a toolkit's process themselves; keys as for
   * addStore. The view is of the module's toolkit and belongs to the caller. NULL when the module has no
   * view.
   */
  void* (*SRStoreDetailsViewWithDetailsDictionary)(const char* details);
} SRUIProtocol;

/*
 * The module's entry points, or NULL when it cannot work with this host. Called before every dialog, by the
 * thread that asks it; `host` is good only during the call, the returned table until the process ends. Host
 * and module may be of different versions: each uses what both have.
 */
SRUI_EXPORT const SRUIProtocol* ServiceRecordUIPrincipalClass(const SRUIHost* host);

#ifdef __cplusplus
}
#endif

#endif
