/* Writes the library's type library to the file named on the command line:
 * the build runs it so that the JSON beside the library always comes from
 * the member tables it was built with. */
#include <stdio.h>
#include <string.h>

#include "quillformatapa.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s OUTPUT.json\n", argv[0]);
    return 2;
  }
  const char* json = qfa_type_library();
  if (!*json) {
    fprintf(stderr, "%s: the library describes no classes\n", argv[0]);
    return 1;
  }
  char temp[4096];
  if (snprintf(temp, sizeof temp, "%s.tmp", argv[1]) >= (int)sizeof temp) {
    fprintf(stderr, "%s: output path too long\n", argv[0]);
    return 2;
  }
  FILE* out = fopen(temp, "wb");
  if (!out) {
    perror(temp);
    return 1;
  }
  const size_t length = strlen(json);
  const int written = fwrite(json, 1, length, out) == length;
  if (fclose(out) != 0 || !written || rename(temp, argv[1]) != 0) {
    perror(argv[1]);
    remove(temp);
    return 1;
  }
  return 0;
}
