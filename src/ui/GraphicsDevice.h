#pragma once

namespace varnel {

/// Whether there is hardware to draw with. Drawing by the processor starts faster and needs less memory than
/// a graphics library that falls back to the processor in the end.
bool hasGraphicsDevice();

} // namespace varnel
