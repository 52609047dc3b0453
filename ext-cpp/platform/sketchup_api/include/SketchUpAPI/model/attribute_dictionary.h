#ifndef SKETCHUP_API_MODEL_ATTRIBUTE_DICTIONARY_H
#define SKETCHUP_API_MODEL_ATTRIBUTE_DICTIONARY_H

#include <SketchUpAPI/model/defs.h>
#include <SketchUpAPI/unicodestring.h>

SU_API_BEGIN

/* *name must be a string the caller created; its contents are replaced. */
SU_EXPORT SUResult SUAttributeDictionaryGetName(SUAttributeDictionaryRef dictionary,
                                                SUStringRef* name);
/* *value_out must be a typed value the caller created; it receives a copy of the stored value.
   A key that is not in the dictionary gives SU_ERROR_NO_DATA. */
SU_EXPORT SUResult SUAttributeDictionaryGetValue(SUAttributeDictionaryRef dictionary,
                                                 const char* key, SUTypedValueRef* value_out);

SU_API_END

#endif
