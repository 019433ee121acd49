// Loaded into a test's ssh server in front of the C library: every user has the password of the tests, which
// SshServer names, and the real passwords of the machine are never looked at.
#include <shadow.h>

extern "C" spwd* getspnam(const char* name)
{
    static char password[] =
        "$6$varnel$hStsd/w.n/lPiV1e12itC0BTI.vDaBA1WKjfqtXKEW0RPB80N8wY7mp6/dPXezr0ZPvV9ho07tixG.GsJa1u/.";
    static spwd entry{};
    entry.sp_namp = const_cast<char*>(name);
    entry.sp_pwdp = password;
    entry.sp_lstchg = 19000; // days since 1970; no date makes the account expire
    entry.sp_max = 99999;
    entry.sp_warn = -1;
    entry.sp_inact = -1;
    entry.sp_expire = -1;
    return &entry;
}
