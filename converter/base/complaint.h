// Plain words on standard error about what the records pass over in silence: a word that is no
// option, a file that can't be written. Each cause is one line, "veltrum: " and the text. Standard
// output and exit statuses know nothing of it.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Names the file or the word that it is about and the reason. A text that was told before isn't
// told again; a line end in a name is written as a blank.
void Complain(std::string_view text);

// From now on Complain gives its texts there, each time; empty for standard error again. For
// programs that tell them in their own way.
void RedirectComplaints(std::function<void(std::string_view)> sink);

// What Complain writes, for the end of a program: takes no memory, and tells each time.
void ComplainAtEnd(std::string_view text) noexcept;

// That the last save did not write `path`, and why.
void ComplainOfOutput(const std::string& path);

// "'a', 'b' and 7 more".
std::string QuotedList(const std::vector<std::string>& names);
