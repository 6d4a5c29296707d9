#include "app/base/HostCheck.h"

#include "app/base/Win32.h"

// Each of these needs the ones before it.
// clang-format off
#include <winsock2.h>
#include <ws2tcpip.h>
#include <iphlpapi.h>
#include <icmpapi.h>
// clang-format on

#include <objbase.h>
#include <wbemidl.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace kestrelon {

namespace {

constexpr DWORD kPingMilliseconds = 1000;
// WMI itself may be slow to start; after this time the echo is asked instead.
constexpr long kQueryMilliseconds = 5000;

struct ReleaseObject {
  void operator()(IUnknown* object) const { object->Release(); }
};
template <class T>
using Com = std::unique_ptr<T, ReleaseObject>;

class Text {
 public:
  explicit Text(const std::wstring& text) : text_(::SysAllocString(text.c_str())) {}
  ~Text() { ::SysFreeString(text_); }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  BSTR get() const { return text_; }

 private:
  BSTR text_;
};

// COM for the time of one query; the program's own thread has it anyway.
class Apartment {
 public:
  Apartment() : entered_(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
  ~Apartment() {
    if (entered_) ::CoUninitialize();
  }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;

 private:
  bool entered_;
};

template <class T>
void AllowImpersonation(const Com<T>& proxy) {
  // WMI looks at the caller's rights; an object that is no proxy refuses the call, and needs none.
  (void)::CoSetProxyBlanket(proxy.get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                            RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
}

// nullopt: WMI has nothing to say.
std::optional<bool> AskWmi(const std::wstring& host) {
  const Apartment apartment;
  void* made = nullptr;
  if (FAILED(::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_IWbemLocator, &made))) {
    return std::nullopt;
  }
  const Com<IWbemLocator> locator(static_cast<IWbemLocator*>(made));
  IWbemServices* connected = nullptr;
  if (FAILED(locator->ConnectServer(Text(L"ROOT\\CIMV2").get(), nullptr, nullptr, nullptr,
                                    WBEM_FLAG_CONNECT_USE_MAX_WAIT, nullptr, nullptr, &connected))) {
    return std::nullopt;
  }
  const Com<IWbemServices> services(connected);
  AllowImpersonation(services);
  IEnumWbemClassObject* found = nullptr;
  if (FAILED(services->ExecQuery(Text(L"WQL").get(), Text(PingQuery(host)).get(),
                                 WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, &found))) {
    return std::nullopt;
  }
  const Com<IEnumWbemClassObject> rows(found);
  AllowImpersonation(rows);
  IWbemClassObject* fetched = nullptr;
  ULONG count = 0;
  if (rows->Next(kQueryMilliseconds, 1, &fetched, &count) != WBEM_S_NO_ERROR || count == 0)
    return std::nullopt;
  const Com<IWbemClassObject> row(fetched);
  VARIANT status;
  ::VariantInit(&status);
  if (FAILED(row->Get(L"StatusCode", 0, &status, nullptr, nullptr))) return std::nullopt;
  // NULL: the name could not be resolved.
  const bool answers = status.vt == VT_I4 && status.lVal == 0;
  ::VariantClear(&status);
  return answers;
}

class Winsock {
 public:
  Winsock() : started_(::WSAStartup(MAKEWORD(2, 2), &data_) == 0) {}
  ~Winsock() {
    if (started_) ::WSACleanup();
  }
  Winsock(const Winsock&) = delete;
  Winsock& operator=(const Winsock&) = delete;
  explicit operator bool() const { return started_; }

 private:
  WSADATA data_;
  bool started_;
};

bool AnswersEcho(const std::wstring& host) {
  const Winsock winsock;
  if (!winsock) return false;
  ADDRINFOW hints{};
  hints.ai_family = AF_INET;
  ADDRINFOW* resolved = nullptr;
  if (::GetAddrInfoW(host.c_str(), nullptr, &hints, &resolved) != 0 || resolved == nullptr) return false;
  const std::unique_ptr<ADDRINFOW, decltype(&::FreeAddrInfoW)> addresses(resolved, &::FreeAddrInfoW);
  sockaddr_in address{};
  std::copy_n(reinterpret_cast<const char*>(addresses->ai_addr), sizeof address,
              reinterpret_cast<char*>(&address));

  const HANDLE icmp = ::IcmpCreateFile();
  if (icmp == INVALID_HANDLE_VALUE) return false;
  char question[] = "kestrelon";
  alignas(ICMP_ECHO_REPLY) char answer[sizeof(ICMP_ECHO_REPLY) + sizeof question + 8] = {};
  const DWORD replies = ::IcmpSendEcho(icmp, address.sin_addr.s_addr, question, sizeof question, nullptr,
                                       answer, sizeof answer, kPingMilliseconds);
  ::IcmpCloseHandle(icmp);
  return replies > 0 && reinterpret_cast<const ICMP_ECHO_REPLY*>(answer)->Status == IP_SUCCESS;
}

}  // namespace

std::wstring PingQuery(std::wstring_view host) {
  std::wstring query = L"SELECT StatusCode FROM Win32_PingStatus WHERE Address='";
  for (const wchar_t unit : host) {
    if (unit == L'\'' || unit == L'"' || unit == L'\\') query += L'\\';
    query += unit;
  }
  return query + L"' AND Timeout=" + std::to_wstring(kPingMilliseconds);
}

bool HostAnswers(const std::wstring& host) {
  // No host has such a name, and a NUL would cut the query short.
  const auto isControl = [](wchar_t unit) { return unit < L' '; };
  if (host.empty() || std::any_of(host.begin(), host.end(), isControl)) return false;
  if (const std::optional<bool> answers = AskWmi(host)) return *answers;
  return AnswersEcho(host);
}

}  // namespace kestrelon
