#include "platform/Crypto.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <system_error>

namespace platform {

namespace {

struct FreeCipherContext {
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
struct FreeDigestContext {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, FreeCipherContext>;
using DigestContext = std::unique_ptr<EVP_MD_CTX, FreeDigestContext>;

// Fetching an algorithm searches the providers; once a process is enough. Never freed: the library
// outlives everything else.
const EVP_CIPHER* aes256Gcm()
{
    static const EVP_CIPHER* const cipher = EVP_CIPHER_fetch(nullptr, "AES-256-GCM", nullptr);
    return cipher;
}

const EVP_MD* sha256()
{
    static const EVP_MD* const digest = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return digest;
}

void require(bool success, const char* what)
{
    if (!success) throw std::system_error(std::make_error_code(std::errc::not_supported), what);
}

const unsigned char* input(ByteView bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

unsigned char* output(MutableByteView bytes)
{
    return reinterpret_cast<unsigned char*>(bytes.data());
}

// The library counts in int; a record is far shorter.
int lengthOf(ByteView bytes)
{
    require(bytes.size() <= 0x7fffffff, "cipher input too long");
    return static_cast<int>(bytes.size());
}

} // namespace

struct Aes256Gcm::Contexts {
    CipherContext seal{EVP_CIPHER_CTX_new()};
    CipherContext open{EVP_CIPHER_CTX_new()};
};

Aes256Gcm::Aes256Gcm(const SecretKey& key) : contexts_(std::make_unique<Contexts>())
{
    const unsigned char* const bytes = input(key.bytes());
    require(EVP_EncryptInit_ex2(contexts_->seal.get(), aes256Gcm(), bytes, nullptr, nullptr) == 1
            && EVP_DecryptInit_ex2(contexts_->open.get(), aes256Gcm(), bytes, nullptr, nullptr)
                == 1,
        "AES-256-GCM");
}

Aes256Gcm::~Aes256Gcm() = default;

void Aes256Gcm::seal(
    const GcmNonce& nonce, ByteView associatedData, ByteView plaintext, MutableByteView out)
{
    EVP_CIPHER_CTX* const context = contexts_->seal.get();
    int written = 0;
    int rest = 0;
    const MutableByteView tag = out.subspan(plaintext.size(), gcmTagBytes);
    require(EVP_EncryptInit_ex2(context, nullptr, nullptr, input(nonce), nullptr) == 1
            && EVP_EncryptUpdate(
                   context, nullptr, &written, input(associatedData), lengthOf(associatedData))
                == 1
            && EVP_EncryptUpdate(
                   context, output(out), &written, input(plaintext), lengthOf(plaintext))
                == 1
            && EVP_EncryptFinal_ex(context, output(out) + written, &rest) == 1
            && EVP_CIPHER_CTX_ctrl(
                   context, EVP_CTRL_AEAD_GET_TAG, static_cast<int>(gcmTagBytes), output(tag))
                == 1,
        "AES-256-GCM seal");
}

std::optional<std::size_t> Aes256Gcm::open(
    const GcmNonce& nonce, ByteView associatedData, ByteView sealed, MutableByteView out)
{
    if (sealed.size() < gcmTagBytes) return std::nullopt;

    EVP_CIPHER_CTX* const context = contexts_->open.get();
    const ByteView ciphertext = sealed.first(sealed.size() - gcmTagBytes);
    // The library does not write to the tag that it is given to compare with.
    auto* const tag = const_cast<unsigned char*>(input(sealed.last(gcmTagBytes)));
    int written = 0;
    int rest = 0;
    require(EVP_DecryptInit_ex2(context, nullptr, nullptr, input(nonce), nullptr) == 1
            && EVP_DecryptUpdate(
                   context, nullptr, &written, input(associatedData), lengthOf(associatedData))
                == 1
            && EVP_DecryptUpdate(
                   context, output(out), &written, input(ciphertext), lengthOf(ciphertext))
                == 1
            && EVP_CIPHER_CTX_ctrl(
                   context, EVP_CTRL_AEAD_SET_TAG, static_cast<int>(gcmTagBytes), tag)
                == 1,
        "AES-256-GCM open");
    if (EVP_DecryptFinal_ex(context, output(out) + written, &rest) != 1) return std::nullopt;
    return static_cast<std::size_t>(written) + static_cast<std::size_t>(rest);
}

struct Sha256::Context {
    DigestContext digest{EVP_MD_CTX_new()};

    void begin() { require(EVP_DigestInit_ex2(digest.get(), sha256(), nullptr) == 1, "SHA-256"); }
};

Sha256::Sha256() : context_(std::make_unique<Context>())
{
    context_->begin();
}

Sha256::Sha256(Sha256&&) noexcept = default;
Sha256& Sha256::operator=(Sha256&&) noexcept = default;
Sha256::~Sha256() = default;

void Sha256::update(ByteView bytes)
{
    require(EVP_DigestUpdate(context_->digest.get(), bytes.data(), bytes.size()) == 1, "SHA-256");
}

Sha256Digest Sha256::finish()
{
    Sha256Digest digest{};
    require(EVP_DigestFinal_ex(context_->digest.get(), output(digest), nullptr) == 1, "SHA-256");
    context_->begin();
    return digest;
}

Sha256Digest hmacSha256(const SecretKey& key, ByteView message)
{
    Sha256Digest digest{};
    std::size_t length = 0;
    require(EVP_Q_mac(nullptr, "HMAC", nullptr, "SHA256", nullptr, key.bytes().data(),
                key.bytes().size(), input(message), message.size(), output(digest), digest.size(),
                &length)
            != nullptr,
        "HMAC-SHA256");
    return digest;
}

bool fillWithRandomBytes(MutableByteView out)
{
    return RAND_bytes(output(out), lengthOf(out)) == 1;
}

bool equalInConstantTime(ByteView a, ByteView b)
{
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

void wipe(MutableByteView bytes)
{
    OPENSSL_cleanse(bytes.data(), bytes.size());
}

std::optional<SecretKey> SecretKey::fromBytes(ByteView bytes)
{
    if (bytes.size() != length) return std::nullopt;

    SecretKey key;
    copyBytes(bytes, key.bytes_);
    return key;
}

SecretKey SecretKey::random()
{
    SecretKey key;
    if (!fillWithRandomBytes(key.bytes_)) {
        throw std::system_error(
            std::make_error_code(std::errc::io_error), "no secure random bytes");
    }
    return key;
}

SecretKey::SecretKey(SecretKey&& other) noexcept : bytes_(other.bytes_)
{
    wipe(other.bytes_);
}

SecretKey& SecretKey::operator=(SecretKey&& other) noexcept
{
    if (this != &other) {
        bytes_ = other.bytes_;
        wipe(other.bytes_);
    }
    return *this;
}

SecretKey::~SecretKey()
{
    wipe(bytes_);
}

SecretKey SecretKey::clone() const
{
    SecretKey copy;
    copy.bytes_ = bytes_;
    return copy;
}

} // namespace platform
