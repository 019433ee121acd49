// Written for macOS after Apple's documentation of NSFileManager; it has never been built or run there.
#include "store/CloudContainer.h"

#import <Foundation/Foundation.h>

namespace varnel {

std::optional<QString> cloudContainer()
{
    NSURL* const container =
        [NSFileManager.defaultManager URLForUbiquityContainerIdentifier:@"iCloud.com.varnel.Varnel"];
    if (!container)
        return std::nullopt;
    return QString::fromNSString(container.path);
}

} // namespace varnel
