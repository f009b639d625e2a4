#include "link/SharedObjects.h"

#include <windows.h>

#include <system_error>
#include <vector>

#include <boost/interprocess/shared_memory_object.hpp>

namespace quellix {

namespace bi = boost::interprocess;

namespace {

// A security descriptor that grants everything to the user of this process and nothing to anybody
// else, with what it points to.
class OwnerDescriptor {
 public:
  OwnerDescriptor() {
    ReadUser();
    PSID user = reinterpret_cast<TOKEN_USER*>(token.data())->User.Sid;
    list.resize(sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + ::GetLengthSid(user));
    auto* acl = reinterpret_cast<ACL*>(list.data());
    Require(::InitializeAcl(acl, static_cast<DWORD>(list.size()), ACL_REVISION));
    Require(::AddAccessAllowedAce(acl, ACL_REVISION, GENERIC_ALL, user));
    Require(::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    Require(::SetSecurityDescriptorDacl(&descriptor, TRUE, acl, FALSE));
    attributes = {sizeof attributes, &descriptor, FALSE};
  }

  SECURITY_ATTRIBUTES* Attributes() { return &attributes; }

 private:
  static void Require(BOOL done) {
    if (done == 0) {
      throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(),
                              "the channel's owner");
    }
  }

  void ReadUser() {
    HANDLE process = nullptr;
    Require(::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &process));
    DWORD bytes = 0;
    ::GetTokenInformation(process, TokenUser, nullptr, 0, &bytes);
    token.resize(bytes);
    const BOOL done = ::GetTokenInformation(process, TokenUser, token.data(), bytes, &bytes);
    ::CloseHandle(process);
    Require(done);
  }

  std::vector<unsigned char> token;
  std::vector<unsigned char> list;
  SECURITY_DESCRIPTOR descriptor{};
  SECURITY_ATTRIBUTES attributes{};
};

}  // namespace

// Objects are files there, so a file's identity is the object's.
std::optional<ObjectIdentity> IdentityOfObject(const std::string& name) {
  try {
    const bi::shared_memory_object object(bi::open_only, name.c_str(), bi::read_only);
    BY_HANDLE_FILE_INFORMATION file{};
    if (::GetFileInformationByHandle(object.get_mapping_handle().handle, &file) == 0) {
      return std::nullopt;
    }
    return ObjectIdentity{file.dwVolumeSerialNumber,
                          (std::uint64_t{file.nFileIndexHigh} << 32) | file.nFileIndexLow};
  } catch (const bi::interprocess_exception&) {
    return std::nullopt;
  }
}

bi::permissions OwnerOnlyPermissions() {
  static OwnerDescriptor descriptor;
  return bi::permissions(descriptor.Attributes());
}

}  // namespace quellix
