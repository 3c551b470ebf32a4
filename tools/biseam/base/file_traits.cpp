#include "base/file_traits.hpp"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstring>
#include <vector>

namespace biseam::tool {
namespace {

// Lists inherited from the folder go first; access lists are among the attributes.
void copy_attributes(const std::string& from, int to) {
  ::fremovexattr(to, "system.posix_acl_access");
  const ssize_t bytes = ::listxattr(from.c_str(), nullptr, 0);
  if (bytes <= 0) return;
  std::vector<char> names(std::size_t(bytes) + 1);  // one more, so that the last name ends whatever happens meanwhile
  const ssize_t listed = ::listxattr(from.c_str(), names.data(), names.size() - 1);
  for (ssize_t at = 0; at < listed; at += ssize_t(std::strlen(&names[std::size_t(at)])) + 1) {
    const char* const name = &names[std::size_t(at)];
    const ssize_t size = ::getxattr(from.c_str(), name, nullptr, 0);
    if (size < 0) continue;
    std::vector<char> value(std::size_t(size) + 1);
    const ssize_t got = ::getxattr(from.c_str(), name, value.data(), value.size());
    if (got >= 0) ::fsetxattr(to, name, value.data(), std::size_t(got), 0);
  }
}

}  // namespace

bool copy_traits(const std::string& from, int to) {
  struct stat old = {}, now = {};
  if (::stat(from.c_str(), &old) != 0) return false;
  const bool is_owned = ::fchown(to, old.st_uid, old.st_gid) == 0 || ::fchown(to, uid_t(-1), old.st_gid) == 0;
  if (::fstat(to, &now) != 0) return false;
  mode_t mode = old.st_mode & mode_t(07777);
  // Nobody else's program gets the rights of whoever wrote it anew.
  if (!is_owned || now.st_uid != old.st_uid) mode &= ~mode_t(S_ISUID);
  if (!is_owned || now.st_gid != old.st_gid) mode &= ~mode_t(S_ISGID);
  if (::fchmod(to, mode) != 0) return false;
  copy_attributes(from, to);
  return true;
}

}  // namespace biseam::tool
