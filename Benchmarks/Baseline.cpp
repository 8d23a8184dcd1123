// Prints one line and needs its libraries, so that the loader can't leave them out.
#include <curl/curl.h>
#include <sqlite3.h>

#include <iostream>

int main() {
    std::cout << "libcurl " << curl_version_info(CURLVERSION_NOW)->version << ", SQLite "
              << sqlite3_libversion() << "\n";
}
