#pragma once

#include "base/Worker.h"
#include "providers/chat/ImageConverter.h"

#include <QStringList>

namespace varnel {

/// Decodes images with what Qt can read on this computer and makes PNG or JPEG of them, at most 2048 pixels
/// long, upright, and without what else a camera wrote into them. Formats that may name other files, such as
/// SVG, are never read.
class QtImageConverter final : public ImageConverter
{
public:
    static constexpr int longestSide = 2048;

    /// @param worker where images are decoded; outlives the converter and its tasks.
    explicit QtImageConverter(Worker& worker);

    Task<std::optional<PromptMedia>> convert(PromptMedia image, std::stop_token stop) override;

private:
    Worker& m_worker;
};

} // namespace varnel
