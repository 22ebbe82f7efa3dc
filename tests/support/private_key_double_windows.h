#pragma once

namespace quorin::test {

// If the file named by QUORIN_TEST_PRIVATE_KEY exists, every certificate has a private key: the
// file's content, unencrypted PKCS #8 in DER with an RSA or an EC key. Otherwise the functions of
// the system are called. If QUORIN_TEST_REFUSES_PLAIN_EXPORT is set, the key cannot be exported
// unencrypted.
void installPrivateKeyDouble();

// Writes the number of key handles that have not been freed to standard error unless it is 0.
void reportKeysInUse();

} // namespace quorin::test
