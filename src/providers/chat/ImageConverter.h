#pragma once

#include "base/Task.h"
#include "store/PromptMedia.h"

#include <optional>
#include <stop_token>

namespace varnel {

/// Turns an image into one that every provider reads. What can decode images draws them too, so the window
/// implements this; without a window there is none.
class ImageConverter
{
public:
    ImageConverter() = default;
    ImageConverter(const ImageConverter&) = delete;
    ImageConverter& operator=(const ImageConverter&) = delete;
    ImageConverter(ImageConverter&&) = delete;
    ImageConverter& operator=(ImageConverter&&) = delete;
    virtual ~ImageConverter() = default;

    /// The image as "image/png" or "image/jpeg"; nothing if it cannot be decoded. Decoding is long work and
    /// belongs on a worker. Throws Cancelled.
    virtual Task<std::optional<PromptMedia>> convert(PromptMedia image, std::stop_token stop) = 0;
};

} // namespace varnel
