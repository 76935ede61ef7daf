// SPDX-License-Identifier: MIT
// Showing the help document at a topic.
#pragma once

#include <string>

namespace kfx::stage {

// Opens the document of the reference, "PATH#TOPIC" or "PATH", which lies in `folder`, in the user's browser.
// False: it is not there, or no browser starts.
bool ShowHelpTopic(const std::string& folder, const std::string& reference);

// The document as an address: "file:///C:/My%20files/A.HTML#topic".
std::string AddressOf(const std::string& document, const std::string& topic);

}  // namespace kfx::stage
