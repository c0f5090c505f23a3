/* Whom setup trusts: root, the user who runs it, and the owner of the root destination. Everybody
 * else is a stranger. Looking up users and groups is slow, so it is only done where somebody's
 * rights decide something, and remembered. */
#ifndef OVINST_UT_TRUST_H
#define OVINST_UT_TRUST_H

#include <string>
#include <sys/stat.h>
#include <sys/types.h>

/* Root or the running user: whose links lead anywhere, and whose files are filled as they are. */
bool OV_instIsOwn(uid_t user);

/* Whether an object is root's or ours, also where its file system calls us by another name. */
bool OV_instIsOwnObject(const struct stat *pStatus);

/* The same, or it belongs to destinationOwner, the owner of the root destination. */
bool OV_instIsTrustedOwner(const struct stat *pStatus, uid_t destinationOwner);

/* To be told of a file that was just created, by its descriptor: a file system on the network may
 * give what root makes to somebody else, whose files on it are then as good as ours. */
void OV_instNoteCreated(const struct stat *pStatus);

/* Whether the mode lets strangers write, the sticky bit left aside. Writing by the group is
 * harmless when it is root's or has trusted users only; a group that cannot be looked up is not.
 * iFd is the object, opened, by path is enough: an access list of its own may name anybody. */
bool OV_instMayStrangersWrite(const struct stat *pStatus, uid_t destinationOwner, int iFd);

/* The user's name, or number where it has none. */
std::string OV_instUserName(uid_t user);

/* What was refused for want of trust is told through the handler: one sentence without a full stop
 * or line end, each only once until OV_instForgetRefusals. Null (so at the start): nothing is
 * told. The handler may itself use what tells. errno is kept. */
void OV_instSetRefusalHandler(void (*fpTell)(const char *pText));
void OV_instTellRefusal(const std::string &text);
void OV_instForgetRefusals();

#endif
