// Prints one line. It calls its libraries, so that the linker keeps them.
#include <curl/curl.h>
#include <sqlite3.h>

#include <iostream>

int main() {
    std::cout << "libcurl " << curl_version_info(CURLVERSION_NOW)->version << ", SQLite "
              << sqlite3_libversion() << "\n";
}
