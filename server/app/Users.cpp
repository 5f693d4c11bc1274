#include "Users.h"

#include <crypt.h>
#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <istream>
#include <memory>
#include <mutex>
#include <sstream>
#include <unordered_map>

namespace zda::cimserver
{

// Credentials that verified recently, by keyed digest of the user, the
// password and the stored hash (so that a changed hash never matches).
class UserStore::VerifiedCredentials
{
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::minutes kLifetime{5};
    static constexpr std::size_t kMaxEntries = 4096;

    VerifiedCredentials()
    {
        if (RAND_bytes(_key, sizeof _key) != 1)
            _usable = false;  // without a key nothing is remembered
    }

    bool contains(const std::string& digest)
    {
        if (!_usable || digest.empty())
            return false;
        std::lock_guard<std::mutex> lock(_mutex);
        auto found = _entries.find(digest);
        if (found == _entries.end())
            return false;
        if (found->second <= Clock::now())
        {
            _entries.erase(found);
            return false;
        }
        return true;
    }

    void remember(const std::string& digest)
    {
        if (!_usable || digest.empty())
            return;
        std::lock_guard<std::mutex> lock(_mutex);
        if (_entries.size() >= kMaxEntries)
            _entries.clear();
        _entries[digest] = Clock::now() + kLifetime;
    }

    std::string digest(const std::string& user, const std::string& password, const std::string& hash) const
    {
        if (!_usable)
            return std::string();
        std::string message = user + '\0' + password + '\0' + hash;
        unsigned char out[EVP_MAX_MD_SIZE];
        unsigned int size = 0;
        if (!HMAC(EVP_sha256(), _key, sizeof _key, reinterpret_cast<const unsigned char*>(message.data()),
                message.size(), out, &size))
            return std::string();
        OPENSSL_cleanse(&message[0], message.size());
        return std::string(reinterpret_cast<const char*>(out), size);
    }

private:
    unsigned char _key[32];
    bool _usable = true;
    std::mutex _mutex;
    std::unordered_map<std::string, Clock::time_point> _entries;
};

UserStore UserStore::demoUsers()
{
    UserStore users;
    for (const char* name : {"admin", "operator", "viewer", "noaccess"})
        users.setPassword(name, std::string(name) + "-demo");
    return users;
}

bool UserStore::validUserName(const std::string& user)
{
    if (user.empty() || user.size() > 64)
        return false;
    for (unsigned char c : user)
        if (c <= ' ' || c == ':' || c >= 0x7F)
            return false;
    return true;
}

UserStore UserStore::readFile(const std::string& path)
{
    std::ifstream in(path);
    if (!in)
        throw UsersError("cannot read the users file " + path + ": " + std::strerror(errno));
    UserStore users;
    std::string line;
    for (unsigned number = 1; std::getline(in, line); number++)
    {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line[0] == '#')
            continue;
        std::size_t colon = line.find(':');
        std::string name = line.substr(0, colon);
        std::string hash = colon == std::string::npos ? "" : line.substr(colon + 1);
        if (!validUserName(name) || hash.empty() || hash[0] != '$')
            throw UsersError(path + ":" + std::to_string(number) + ": expected name:hash");
        users._hashes[name] = hash;
    }
    users._verified = std::make_shared<VerifiedCredentials>();
    return users;
}

namespace
{

bool holdsNul(const std::string& text)
{
    return text.find('\0') != std::string::npos;
}

}  // namespace

bool UserStore::remembered(const std::string& user, const std::string& password) const
{
    auto found = _hashes.find(user);
    if (found == _hashes.end() || !_verified || holdsNul(user) || holdsNul(password))
        return false;
    return _verified->contains(_verified->digest(user, password, found->second));
}

bool UserStore::verify(const std::string& user, const std::string& password) const
{
    // crypt(3) would stop at the NUL and check a shorter password.
    if (holdsNul(user) || holdsNul(password) || _hashes.empty())
        return false;
    auto found = _hashes.find(user);
    const bool known = found != _hashes.end();
    // An unknown user is checked against a stored hash all the same, which
    // costs what a known user's check costs, and then refused.
    const std::string& stored = known ? found->second : _hashes.begin()->second;
    const std::string digest = known && _verified ? _verified->digest(user, password, stored) : std::string();
    if (known && _verified && _verified->contains(digest))
        return true;
    // crypt_data is large; one per call keeps verification thread-safe.
    auto data = std::make_unique<crypt_data>();
    std::memset(data.get(), 0, sizeof(crypt_data));
    const char* computed = crypt_r(password.c_str(), stored.c_str(), data.get());
    if (!computed || computed[0] == '*')
        return false;
    std::size_t n = std::strlen(computed);
    if (n != stored.size())
        return false;
    // Compare without an early exit, so the time does not tell how much matched.
    unsigned char diff = 0;
    for (std::size_t i = 0; i < n; i++)
        diff |= static_cast<unsigned char>(computed[i] ^ stored[i]);
    if (diff != 0 || !known)
        return false;
    if (_verified)
        _verified->remember(digest);
    return true;
}

std::string UserStore::hashPassword(const std::string& password)
{
    char salt[CRYPT_GENSALT_OUTPUT_SIZE];
    // A null prefix asks for the system's preferred method (yescrypt here).
    if (!crypt_gensalt_rn(nullptr, 0, nullptr, 0, salt, sizeof salt))
        throw UsersError(std::string("cannot make a password salt: ") + std::strerror(errno));
    auto data = std::make_unique<crypt_data>();
    std::memset(data.get(), 0, sizeof(crypt_data));
    const char* hash = crypt_r(password.c_str(), salt, data.get());
    if (!hash || hash[0] == '*')
        throw UsersError("cannot hash the password");
    return hash;
}

void UserStore::setPassword(const std::string& user, const std::string& password)
{
    if (!validUserName(user))
        throw UsersError("not a usable user name: '" + user + "'");
    _hashes[user] = hashPassword(password);
    _verified = std::make_shared<VerifiedCredentials>();
}

void UserStore::writeFile(const std::string& path) const
{
    std::string temporary = path + ".new";
    int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        throw UsersError("cannot write " + temporary + ": " + std::strerror(errno));
    std::string text;
    for (const auto& [name, hash] : _hashes)
        text += name + ":" + hash + "\n";
    bool written = ::write(fd, text.data(), text.size()) == ssize_t(text.size()) && ::fsync(fd) == 0;
    written = ::close(fd) == 0 && written;
    if (!written || std::rename(temporary.c_str(), path.c_str()) != 0)
    {
        std::string reason = std::strerror(errno);
        std::remove(temporary.c_str());
        throw UsersError("cannot write " + path + ": " + reason);
    }
}

void addUserToFile(const std::string& path, const std::string& user, std::istream& in)
{
    UserStore users;
    struct stat st;
    if (::stat(path.c_str(), &st) == 0)
        users = UserStore::readFile(path);
    std::string password;
    if (!std::getline(in, password))
        throw UsersError("no password given on standard input");
    if (!password.empty() && password.back() == '\r')
        password.pop_back();
    if (password.empty())
        throw UsersError("the password is empty");
    users.setPassword(user, password);
    users.writeFile(path);
}

}  // namespace zda::cimserver
