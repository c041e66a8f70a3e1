/* A program outside the project: it drives the installed library through its
 * C interface only. It serves the library a diagnostics service (which the
 * library requires), asks a command object for an instruction record and
 * checks that the library can be unloaded once the object is gone. */
#include <quillformatapa.h>
#include <stdio.h>
#include <string.h>
#include <strings.h>

static const char* const kMembers[] = {"ErrorParams", "vbwProcIn", "vbwProcOut", "vbwAfterDump", "vbwExitThread"};
enum { kErrorParams, kProcIn, kProcOut, kAfterDump, kExitThread, kMemberCount };

static qfa_object* service;
static int procedures;

static int32_t id_of_name(void* self, const char* name) {
  (void)self;
  for (int i = 0; i < kMemberCount; ++i)
    if (strcasecmp(name, kMembers[i]) == 0) return i;
  return -1;
}

/* One object is both the bridge and the service: it hands out itself. */
static int32_t invoke(void* self, int32_t id, int32_t kind, qfa_variant* const* args, size_t argc,
                      const char* const* names, size_t named_count, qfa_variant* result) {
  (void)self, (void)kind, (void)args, (void)argc, (void)names, (void)named_count;
  switch (id) {
    case kErrorParams: qfa_variant_set_object(result, service); return 0;
    case kProcIn: ++procedures; return 0;
    case kAfterDump: qfa_variant_set_long(result, 1); return 0; /* leave the failing procedure */
    default: return 0;
  }
}

int main(void) {
  static const qfa_host_vtable vtable = {id_of_name, invoke, NULL, NULL};
  service = qfa_host_object_new(&vtable, NULL);
  if (qfa_register_running_object("QuillPaperDot.BridgeToVB", service) != QFA_OK) return 1;

  qfa_object* main2 = NULL;
  if (qfa_create_object("QuillFormatAPA.Main2", &main2) != QFA_OK) {
    fprintf(stderr, "create: %s\n", qfa_error_description());
    return 1;
  }
  qfa_variant* caption = qfa_variant_new();
  qfa_variant* code = qfa_variant_new();
  qfa_variant* record = qfa_variant_new();
  qfa_variant_set_string(caption, "Title", 5);
  qfa_variant_set_integer(code, 3);
  qfa_variant* args[] = {caption, code};
  if (qfa_invoke(main2, "buildInstruction", QFA_METHOD, args, 2, NULL, 0, record) != QFA_OK) {
    fprintf(stderr, "buildInstruction: %s\n", qfa_error_description());
    return 1;
  }
  const char* text;
  size_t length;
  qfa_variant_get_string(record, &text, &length);
  printf("QuillFormatAPA %s: buildInstruction(\"Title\", 3) = %.*s after %d traced procedures\n", qfa_version(),
         (int)length, text, procedures);
  const int right = length == 6 && memcmp(text, "3Title", 6) == 0 && procedures > 0;

  qfa_variant_free(caption);
  qfa_variant_free(code);
  qfa_variant_free(record);
  qfa_object_release(main2);
  qfa_revoke_running_object("QuillPaperDot.BridgeToVB");
  qfa_object_release(service);
  if (!DllCanUnloadNow()) {
    fprintf(stderr, "objects still alive after every release\n");
    return 1;
  }
  return right ? 0 : 1;
}
