// The users the server accepts with HTTP Basic authentication: names with
// crypt(3) hashes (yescrypt by default), read from a users file of
// "name:hash" lines, or the built-in demo users when the server runs
// without a users file.
#ifndef ZDA_CIMSERVER_USERS_H
#define ZDA_CIMSERVER_USERS_H

#include <map>
#include <memory>
#include <stdexcept>
#include <string>

namespace zda::cimserver
{

class UsersError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

class UserStore
{
public:
    // The demo users admin, operator, viewer and noaccess, each with the
    // password "<name>-demo". For demonstrations only.
    static UserStore demoUsers();

    // Reads a users file: one "name:hash" per line; empty lines and lines
    // starting with '#' are skipped. Throws UsersError naming the file and
    // line for anything else.
    static UserStore readFile(const std::string& path);

    // Whether `password` is the password of `user`. Thread-safe.
    //
    // The hash is deliberately slow, and clients such as wbemcli open a
    // connection, and so authenticate, for every request. A credential that
    // verified is therefore remembered for a few minutes, as a digest keyed
    // with a random key of this process, and then verifies at once; a wrong
    // password always pays the full hash, and so does an unknown user (the
    // time taken does not tell which names exist). A user name or password
    // holding a NUL byte never verifies.
    bool verify(const std::string& user, const std::string& password) const;

    // Whether the credential verified recently (see verify()): answered
    // without the hash.
    bool remembered(const std::string& user, const std::string& password) const;

    bool contains(const std::string& user) const { return _hashes.count(user) != 0; }
    std::size_t size() const { return _hashes.size(); }

    // Adds the user or replaces the password.
    void setPassword(const std::string& user, const std::string& password);

    // Writes the users to `path` atomically (a new file, mode 0600, renamed
    // over the old one). Throws UsersError.
    void writeFile(const std::string& path) const;

    // A fresh crypt(3) hash of `password` with a random salt. Throws
    // UsersError when the system cannot make one.
    static std::string hashPassword(const std::string& password);

    // A user name that fits in a users file and in a Basic credential.
    static bool validUserName(const std::string& user);

private:
    class VerifiedCredentials;

    std::map<std::string, std::string> _hashes;
    // Shared by copies of the store; replaced when a password changes.
    std::shared_ptr<VerifiedCredentials> _verified;
};

// Adds a user to (or changes a password in) the users file at `path`, which
// is created when missing. The password is the first line read from `in`.
// Throws UsersError.
void addUserToFile(const std::string& path, const std::string& user, std::istream& in);

}  // namespace zda::cimserver

#endif
