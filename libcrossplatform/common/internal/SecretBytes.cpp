#include <libcrossplatform/common/internal/SecretBytes.h>

#include <openssl/crypto.h>

namespace Veltra {

void wipe(void* memory, std::size_t size) {
  if (memory != nullptr) OPENSSL_cleanse(memory, size);
}

void wipe(std::string& text) {
  text.resize(text.capacity());  // never reallocates
  wipe(text.data(), text.size());
  text.clear();
}

}  // namespace Veltra
