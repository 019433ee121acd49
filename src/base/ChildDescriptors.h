#pragma once

namespace varnel {

/// Sees to it that no descriptor but the three standard ones survives the next exec of this process. For the
/// child, between fork and exec: libraries open sockets and files that would otherwise live on in a tool, and
/// a connection that a tool holds is not closed by closing it here. Calls nothing that is forbidden there.
void closeDescriptorsOnExec() noexcept;

} // namespace varnel
