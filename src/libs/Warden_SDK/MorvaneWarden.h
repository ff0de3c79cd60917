#ifndef WARDEN_SDK_MORVANE_WARDEN_H
#define WARDEN_SDK_MORVANE_WARDEN_H

/*
 * The authentication manager: makes the requests that reach a store, directly or through its gateway, and
 * answers the authentication challenges that come back. The library sends nothing itself. Its caller runs a
 * loop: Prepare2 says whether a request is to be sent and, if so, GetTranslatedUrl and GetHeaders say which;
 * ReportHttpResponse takes the answer, and SetAnsweringUrl, before it, where that came from.
 *
 * Challenges (status 401) that come over https are answered with the strongest scheme on offer that can be
 * served: Negotiate, when there is a ticket; Digest with SHA-256; Digest with MD5 (both with "auth" or
 * without qop); Basic. User name and password come from the credential program "servicerecord-credential",
 * which lies in the library's folder: from the Secret Service, else from the user. For a gateway whose users
 * log on with a code the user is asked for that too; it is sent right behind the password, and never stored.
 * A request has three tries, a stored credential included. A stored credential that was rejected is erased;
 * one to be remembered is stored when it was accepted.
 *
 * Without TLS no challenge is answered. Nobody logs on at a proxy: a 407 ends the request, and no credential
 * is read, sent, asked for or erased.
 *
 * Several requests run at once, each on its own thread, and none waits for another. That users are asked one
 * question at a time is the credential program's part.
 *
 * What the user cancels is not asked again on the same thread for ten minutes: a caller runs the requests
 * that belong together on one thread, and gives each such flow a thread of its own.
 *
 * Texts are NUL-terminated wide strings, one code point per character. Handles are used by one thread at a
 * time, different handles by several at once; MorvaneWarden_CancelRequests is for any thread. No function
 * throws or ends the process.
 */

#include <stdint.h>
#include <wchar.h>

#ifdef __cplusplus
extern "C" {
#endif

#define MORVANE_WARDEN_EXPORT __attribute__((visibility("default")))

/* Results of the functions. */
typedef enum MorvaneWardenStatus {
  MORVANE_WARDEN_OK = 0,
  /* A null pointer, a URL that nobody can be asked for, a number outside its range. Nothing has changed. */
  MORVANE_WARDEN_BAD_PARAMETER = 1,
  /* There was no MorvaneWarden_Initialize. */
  MORVANE_WARDEN_NOT_INITIALIZED = 2,
  /* There is no prepared request: the last action was not MORVANE_WARDEN_ACTION_SEND. */
  MORVANE_WARDEN_NOTHING_PREPARED = 3,
  /* Out of memory or descriptors. */
  MORVANE_WARDEN_OUT_OF_RESOURCES = 4
} MorvaneWardenStatus;

/* What to do next with a request. Every action but MORVANE_WARDEN_ACTION_SEND is the request's last. */
typedef enum MorvaneWardenAction {
  /* Send the prepared request and report its answer. */
  MORVANE_WARDEN_ACTION_SEND = 1,
  /* The request was answered with status 200; nothing is left to do. */
  MORVANE_WARDEN_ACTION_DONE = 2,
  /* There is no credential, and nobody who could be asked for one. */
  MORVANE_WARDEN_ACTION_NO_CREDENTIALS = 3,
  /* No challenge is of a scheme that can be served, or the address that was asked is not https. */
  MORVANE_WARDEN_ACTION_UNSUPPORTED_SCHEME = 4,
  /* Three credentials were rejected, or the answers go round in a circle. */
  MORVANE_WARDEN_ACTION_TOO_MANY_TRIES = 5,
  /* The answer is neither a 200 nor a challenge, or a challenge of another server than the one asked. */
  MORVANE_WARDEN_ACTION_REFUSED = 6,
  /* The credential program cannot be started or does not keep to its convention. */
  MORVANE_WARDEN_ACTION_CREDENTIAL_PROGRAM_FAILED = 7,
  /* The user cancelled, or MorvaneWarden_CancelRequests was called. */
  MORVANE_WARDEN_ACTION_CANCELLED = 8,
  /* No answer came: the reported status is 0. */
  MORVANE_WARDEN_ACTION_NO_ANSWER = 9,
  /* No context, or one whose forced route was refused: nothing is sent past the gateway. */
  MORVANE_WARDEN_ACTION_BAD_PARAMETER = 10,
  /* Out of memory, or the cryptographic library failed. */
  MORVANE_WARDEN_ACTION_INTERNAL_ERROR = 11
} MorvaneWardenAction;

/* Gateway modes of a route. The gateway is asked for the store in modes 1 and 2; in 0 and 3 the URL stays. */
typedef enum MorvaneWardenGatewayMode {
  MORVANE_WARDEN_MODE_SG = 0,
  MORVANE_WARDEN_MODE_SG_REWRITE = 1,
  MORVANE_WARDEN_MODE_REWRITE = 2,
  MORVANE_WARDEN_MODE_VPN = 3
} MorvaneWardenGatewayMode;

/* The kind of request that MorvaneWarden_CreateRequestContext makes: one GET. */
#define MORVANE_WARDEN_REQUEST_GET 3u

/* The way through a gateway. The texts are read during the call only. */
typedef struct MorvaneWardenRoute {
  /* May be empty or null; for the log, and for whoever is asked to log on. */
  const wchar_t* GatewayName;
  /* A URL without query; without a scheme it is http, and a '/' at its end does not matter. */
  const wchar_t* GatewayLocation;
  /* 0 standard, 1 advanced, 2 enterprise. */
  uint32_t Edition;
  /*
   * How users log on at the gateway: 0 password and code, 1 none, 2 domain, 3 domain password and code, 4
   * code from a message, 5 the gateway knows.
   */
  uint32_t Authentication;
  /* A MorvaneWardenGatewayMode. */
  uint32_t GatewayMode;
} MorvaneWardenRoute;

/* Where the user is asked to log on, and for what. Read during the call only, but for the descriptors. */
typedef struct MorvaneWardenQuestions {
  /* Whose request it is; may be empty or null. */
  const wchar_t* StoreName;
  /* The terminal to ask on; -1: the credential program chooses. Open until the context is destroyed. */
  int TerminalDescriptor;
  /*
   * Readable when nobody wants the answer any more, which closes this request's question and cancels the
   * request; -1: never. Only polled, and open until the context is destroyed.
   */
  int WithdrawalDescriptor;
  /*
   * The desktop to ask on where there is no terminal: variables of the credential program's environment, each
   * "NAME=value" as the system has them, with a null pointer behind the last, which stand in place of all of
   * that kind in this program's own. Null, or none: it has those of this program.
   */
  const char* const* Desktop;
} MorvaneWardenQuestions;

typedef struct MorvaneWardenConnection MorvaneWardenConnection;
typedef struct MorvaneWardenRequestContext MorvaneWardenRequestContext;

/*
 * Receives the library's log lines, without line ends and never with a secret in them; level 0 is progress, 2
 * a failure. Called on the threads that use the library, several at once.
 */
typedef void (*MorvaneWardenLogFunction)(int level, const wchar_t* message);

/* Any time, any thread. Null, as at the start, drops the lines. */
MORVANE_WARDEN_EXPORT void MorvaneWarden_SetLogFunction(MorvaneWardenLogFunction function);

/*
 * Receives 1 when the calling thread begins to wait for the credential program, which may be asking the user,
 * and 0 when it has ended. Called on that thread, in MorvaneWarden_Prepare2.
 */
typedef void (*MorvaneWardenWaitFunction)(int waits);
/* Any time, any thread. Null, as at the start, tells nobody. */
MORVANE_WARDEN_EXPORT void MorvaneWarden_SetWaitFunction(MorvaneWardenWaitFunction function);

/* Before anything else, as often as MorvaneWarden_Uninitialize; uses may overlap, on any thread. */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_Initialize(void);
/*
 * Ends one use of the library, after everything made in it is destroyed. MORVANE_WARDEN_NOT_INITIALIZED, and
 * nothing changed, when there is none. The library's log function stays.
 */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_Uninitialize(void);

/*
 * Any thread, at the program's end: closes the questions to the user, those too that wait for their turn.
 * From then on every MorvaneWarden_Prepare2 answers MORVANE_WARDEN_ACTION_CANCELLED.
 */
MORVANE_WARDEN_EXPORT void MorvaneWarden_CancelRequests(void);

/*
 * `name` says in the log whose requests these are. `reserved1` and `reserved2` must be zero. The caller
 * destroys the connection, after its contexts; on failure it is null.
 */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_CreateConnection(
    const wchar_t* name, uint32_t reserved1, uint32_t reserved2, MorvaneWardenConnection** connection);
/* After the connection's contexts; its handle is void then. Always MORVANE_WARDEN_OK. Null is allowed. */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus
MorvaneWarden_DestroyConnection(MorvaneWardenConnection* connection);

/*
 * A request for the store's URL (http when it has no scheme). `kind` is MORVANE_WARDEN_REQUEST_GET. The
 * caller destroys the context; on failure it is null.
 */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus
MorvaneWarden_CreateRequestContext(MorvaneWardenConnection* connection, const wchar_t* storeUrl,
                                   uint32_t kind, MorvaneWardenRequestContext** context);
/* Wipes what the context knows. Null is allowed. */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_DestroyContext(MorvaneWardenRequestContext* context);

/* Before the first MorvaneWarden_Prepare2. After a failure the context prepares nothing any more. */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_ForceRoute(MorvaneWardenRequestContext* context,
                                                                   const MorvaneWardenRoute* route);

/* Optional, before the first MorvaneWarden_Prepare2. */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_SetQuestions(MorvaneWardenRequestContext* context,
                                                                     const MorvaneWardenQuestions* questions);

/*
 * `action` receives a MorvaneWardenAction, on failure of the call too. Blocks while the user is asked.
 */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_Prepare2(MorvaneWardenRequestContext* context,
                                                                 uint32_t* action);

/*
 * The URL to request, without blanks or characters outside ASCII behind the host. It is to be requested to
 * the letter, dots in its path included: a header line may be good for this very target only. Null on
 * failure.
 */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_GetTranslatedUrl(MorvaneWardenRequestContext* context,
                                                                         const wchar_t** url);
/* What MorvaneWarden_GetTranslatedUrl returned; null is allowed. */
MORVANE_WARDEN_EXPORT void MorvaneWarden_FreeTranslatedUrl(const wchar_t* url);

/*
 * The header lines to send, each "Name: value" without a line end, and a null pointer behind the last. They
 * hold secrets: the caller wipes its copies. Null on failure.
 */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_GetHeaders(MorvaneWardenRequestContext* context,
                                                                   const wchar_t* const** lines);
/* Wipes what MorvaneWarden_GetHeaders returned; null is allowed. */
MORVANE_WARDEN_EXPORT void MorvaneWarden_FreeHeaders(const wchar_t* const* lines);

/*
 * Optional, before MorvaneWarden_ReportHttpResponse: the URL that the answer came from, when the caller has
 * followed redirects. Without it the answer counts as the requested URL's; an address that cannot be read, a
 * bad parameter, counts as another server's. A challenge of the same server is answered at that URL, which
 * the next pass then requests; one of another server ends the request. Because of an answer of another server
 * no credential is asked for, sent, stored or erased.
 */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_SetAnsweringUrl(MorvaneWardenRequestContext* context,
                                                                        const wchar_t* url);

/*
 * The answer to the prepared request: its status, 0 for none, and its header lines without line ends, with a
 * null pointer behind the last (or null for no lines). Lines with a line break in them, without a colon or
 * over 64 KiB are ignored, and so is what follows the first 1000 lines. Stores or erases a credential where
 * that is due, which may wait for the Secret Service, ten seconds at most.
 */
MORVANE_WARDEN_EXPORT MorvaneWardenStatus MorvaneWarden_ReportHttpResponse(
    MorvaneWardenRequestContext* context, int64_t status, const wchar_t* const* lines);

#ifdef __cplusplus
}
#endif

#endif
