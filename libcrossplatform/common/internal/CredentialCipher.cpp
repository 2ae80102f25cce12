#include <libcrossplatform/common/internal/CredentialCipher.h>

#include <algorithm>
#include <limits>
#include <memory>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>

namespace Veltra {
namespace {

constexpr std::size_t BLOCK_BYTES = 16;
// OpenSSL counts in int; room is left for padding and line breaks.
constexpr std::size_t MAX_BYTES = std::numeric_limits<int>::max() / 2;

// Refused texts are common here: what OpenSSL records about them must not reach a caller that reads its error queue.
class ErrorQueueGuard {
 public:
  ErrorQueueGuard() { ERR_set_mark(); }
  ~ErrorQueueGuard() { ERR_pop_to_mark(); }
  ErrorQueueGuard(const ErrorQueueGuard&) = delete;
  ErrorQueueGuard& operator=(const ErrorQueueGuard&) = delete;
};

struct FreeContext {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, FreeContext>;

struct FreeChain {
  void operator()(BIO* bio) const { BIO_free_all(bio); }
};
using Chain = std::unique_ptr<BIO, FreeChain>;

// The base64 filter before a memory sink or source; null when either cannot be created.
Chain base64Over(BIO* memory) {
  Chain end(memory);
  Chain filter(BIO_new(BIO_f_base64()));
  if (end == nullptr || filter == nullptr) return nullptr;
  BIO_push(filter.get(), end.release());
  return filter;
}

// The text without its line breaks. A carriage return counts as one only before a newline.
std::string withoutLineBreaks(const std::string& text) {
  std::string bare;
  bare.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool lineBreak = text[i] == '\n' || (text[i] == '\r' && text.compare(i, 2, "\r\n") == 0);
    if (!lineBreak) bare += text[i];
  }
  return bare;
}

}  // namespace

std::vector<uint8_t> encryptCbc(gsl::span<const uint8_t> plain, const CredentialKey& key) {
  const ErrorQueueGuard guard;
  const Context context(EVP_CIPHER_CTX_new());
  if (context == nullptr || plain.size() > MAX_BYTES) return {};
  std::vector<uint8_t> encrypted(plain.size() + BLOCK_BYTES);
  int updated = 0;
  int finished = 0;
  if (EVP_EncryptInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, key.data(), key.data()) != 1 ||
      EVP_EncryptUpdate(context.get(), encrypted.data(), &updated, plain.data(), static_cast<int>(plain.size())) != 1 ||
      EVP_EncryptFinal_ex(context.get(), encrypted.data() + updated, &finished) != 1) {
    return {};
  }
  encrypted.resize(static_cast<std::size_t>(updated) + static_cast<std::size_t>(finished));
  return encrypted;
}

CbcPlain decryptCbc(gsl::span<const uint8_t> encrypted, const CredentialKey& key) {
  const ErrorQueueGuard guard;
  CbcPlain plain{CbcPlain::STATUS_UPDATE_FAILED, {}, 0, 0};
  const Context context(EVP_CIPHER_CTX_new());
  if (context == nullptr || encrypted.size() > MAX_BYTES) return plain;
  SecretBytes bytes(encrypted.size() + BLOCK_BYTES);
  int updated = 0;
  int finished = 0;
  if (EVP_DecryptInit_ex(context.get(), EVP_aes_128_cbc(), nullptr, key.data(), key.data()) != 1 ||
      EVP_DecryptUpdate(context.get(), bytes.data(), &updated, encrypted.data(), static_cast<int>(encrypted.size())) !=
          1) {
    return plain;
  }
  plain.status = CbcPlain::STATUS_FINAL_FAILED;
  if (EVP_DecryptFinal_ex(context.get(), bytes.data() + updated, &finished) != 1) return plain;
  plain.status = CbcPlain::STATUS_OK;
  plain.updateBytes = static_cast<std::size_t>(updated);
  plain.finalBytes = static_cast<std::size_t>(finished);
  bytes.resize(plain.updateBytes + plain.finalBytes);
  plain.bytes = std::move(bytes);
  return plain;
}

std::string encodeBase64(gsl::span<const uint8_t> bytes) {
  const ErrorQueueGuard guard;
  if (bytes.empty() || bytes.size() > MAX_BYTES) return {};
  const Chain chain = base64Over(BIO_new(BIO_s_mem()));
  const int size = static_cast<int>(bytes.size());
  if (chain == nullptr || BIO_write(chain.get(), bytes.data(), size) != size || BIO_flush(chain.get()) != 1) return {};
  char* text = nullptr;
  const long length = BIO_get_mem_data(chain.get(), &text);
  return std::string(text, static_cast<std::size_t>(length));
}

std::vector<uint8_t> decodeBase64(const std::string& text) {
  const ErrorQueueGuard guard;
  const std::string bare = withoutLineBreaks(text);
  if (bare.empty() || bare.size() > MAX_BYTES) return {};
  const Chain chain = base64Over(BIO_new_mem_buf(bare.data(), static_cast<int>(bare.size())));
  if (chain == nullptr) return {};
  BIO_set_flags(chain.get(), BIO_FLAGS_BASE64_NO_NL);

  std::vector<uint8_t> bytes(bare.size());
  std::size_t size = 0;
  while (size < bytes.size()) {
    const int read = BIO_read(chain.get(), bytes.data() + size, static_cast<int>(bytes.size() - size));
    if (read <= 0) break;
    size += static_cast<std::size_t>(read);
  }
  bytes.resize(size);
  // The filter skips what it does not understand and ignores spare bits. Only the one text that these bytes encode to
  // is accepted, so that no character of a stored text can be changed unnoticed.
  if (withoutLineBreaks(encodeBase64(bytes)) != bare) bytes.clear();
  return bytes;
}

}  // namespace Veltra
