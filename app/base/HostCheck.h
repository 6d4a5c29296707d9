#pragma once

#include <string>
#include <string_view>

namespace kestrelon {

// Does the host answer a ping within about a second? Asks WMI's Win32_PingStatus; where WMI cannot be reached
// or has no answer of either kind, an ICMP echo to the host's first IPv4 address. An empty name does not
// answer.
bool HostAnswers(const std::wstring& host);

// The WQL statement for one host. Quotes and backslashes of the name are escaped, so no name can end the
// literal.
std::wstring PingQuery(std::wstring_view host);

}  // namespace kestrelon
