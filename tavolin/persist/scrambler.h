// Makes texts in files unreadable to the casual eye. It keeps nothing secret.
#pragma once

#include <string>
#include <string_view>

namespace tavolin {

// `text` combined with a fixed stream of numbers k from 65 to 90, one for each UTF-16 code unit. A
// character of code page 1252 with code c becomes the one with code c xor k. Any other code unit u
// becomes u xor k, unless that is a character of the page: then u stays. DO NOT CHANGE the result:
// it is stored in files.
//
// It is its own inverse for every sequence of bytes: ScrambleText(ScrambleText(t)) == t. The number
// of code units stays, the number of bytes need not. Pairs of surrogates stay pairs and lone ones
// lone. A byte that belongs to no UTF-8 character stays as it is and uses up one k.
std::string ScrambleText(std::string_view text);

}  // namespace tavolin
