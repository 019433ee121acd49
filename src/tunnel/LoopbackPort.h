#pragma once

namespace varnel {

/// Whether nobody answers on 127.0.0.1 and the port, and a program of this user could listen there. Blocks
/// for half a second at most.
bool isLoopbackPortFree(int port);

} // namespace varnel
