#include "Sha256.h"

#include <memory>

#include <fmt/format.h>
#include <openssl/evp.h>

namespace Command {

std::string sha256Of(const Inspect::ByteSource& source) {
  const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
  if (context == nullptr || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1) return "";
  for (uint64_t done = 0; done < source.size();) {
    const uint8_t* at = nullptr;
    const std::size_t got = source.view(done, at);
    if (got == 0 || EVP_DigestUpdate(context.get(), at, got) != 1) return "";
    done += got;
  }
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned size = 0;
  if (EVP_DigestFinal_ex(context.get(), digest, &size) != 1) return "";
  std::string text;
  for (unsigned i = 0; i < size; ++i) text += fmt::format("{:02x}", digest[i]);
  return text;
}

}  // namespace Command
