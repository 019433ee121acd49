#pragma once

namespace varnel::test {

/// This program's own name resolution, in place of the system's: "slow.test" is looked up until the program
/// lets it, "proxied.test" does not exist, and every other name goes to the real one.
class SlowResolver
{
public:
    /// How many look-ups of "slow.test" are waiting.
    static int waiting();
    /// Lets all look-ups of "slow.test" end; they find nothing.
    static void release();
};

} // namespace varnel::test
