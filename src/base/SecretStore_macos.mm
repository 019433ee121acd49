// The store of macOS: generic passwords of the login keychain, through the Security framework.
//
// Written against Apple's documentation and never built or run by its authors, who have no Mac: whoever
// builds it first should try saving, reading back and clearing a key, and a read while the keychain is
// locked.

#include "base/SecretStore.h"

#import <Foundation/Foundation.h>
#import <LocalAuthentication/LocalAuthentication.h>
#import <Security/Security.h>

#if !__has_feature(objc_arc)
#error "This file relies on automatic reference counting (-fobjc-arc)."
#endif

namespace varnel {

namespace {

NSMutableDictionary* itemQuery(const QString& account)
{
    return [@{
        (__bridge id)kSecClass : (__bridge id)kSecClassGenericPassword,
        (__bridge id)kSecAttrService : @(SecretStore::service),
        (__bridge id)kSecAttrAccount : account.toNSString(),
    } mutableCopy];
}

class KeychainStore final : public SecretStore
{
protected:
    std::optional<QByteArray> find(const QString& account, Unlocking unlocking) override
    {
        @autoreleasepool {
            NSMutableDictionary* const query = itemQuery(account);
            query[(__bridge id)kSecReturnData] = @YES;
            query[(__bridge id)kSecMatchLimit] = (__bridge id)kSecMatchLimitOne;
            if (unlocking == Unlocking::Never) {
                LAContext* const silent = [[LAContext alloc] init];
                silent.interactionNotAllowed = YES;
                query[(__bridge id)kSecUseAuthenticationContext] = silent;
            }
            CFTypeRef found = nullptr;
            // Whatever keeps the item from being read, a new one can still be added in its place.
            if (SecItemCopyMatching((__bridge CFDictionaryRef)query, &found) != errSecSuccess || !found)
                return std::nullopt;
            const id object = CFBridgingRelease(found);
            if (![object isKindOfClass:[NSData class]])
                return std::nullopt;
            return QByteArray::fromNSData(static_cast<NSData*>(object));
        }
    }

    void add(const QString& account, const QByteArray& value) override
    {
        @autoreleasepool {
            NSMutableDictionary* const item = itemQuery(account);
            item[(__bridge id)kSecAttrLabel] = (QStringLiteral("Varnel: ") + account).toNSString();
            item[(__bridge id)kSecAttrAccessible] =
                (__bridge id)kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly;
            item[(__bridge id)kSecValueData] = value.toNSData();
            const OSStatus status = SecItemAdd((__bridge CFDictionaryRef)item, nullptr);
            if (status != errSecSuccess)
                throw SecretStoreError(static_cast<int>(status));
        }
    }

    void erase(const QString& account) override
    {
        @autoreleasepool {
            const OSStatus status = SecItemDelete((__bridge CFDictionaryRef)itemQuery(account));
            if (status != errSecSuccess && status != errSecItemNotFound)
                throw SecretStoreError(static_cast<int>(status));
        }
    }
};

} // namespace

std::unique_ptr<SecretStore> systemSecretStore()
{
    return std::make_unique<KeychainStore>();
}

} // namespace varnel
