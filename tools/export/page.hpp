// The page's template as part of the program: page.html with page.css, renderer.js and page.js in
// it, put together at build time. "@DATA@" stands where the data belong.
#pragma once

namespace exporting {

extern const char* const page_template;

}  // namespace exporting
