#ifndef SKETCHUP_API_STANDIN_H
#define SKETCHUP_API_STANDIN_H

/* The stand-in's own control surface, beside the SDK functions: building models in memory,
   making any SDK function fail on demand, and counting what callers still hold. Tests, the
   benchmarks and the host's Ruby stand-in (through Fiddle) drive the library with it.

   Every reference is a struct holding one pointer, so on the x86-64 and AArch64 calling
   conventions it travels exactly like a void*; the Ruby side relies on that. */

#include <SketchUpAPI/sketchup.h>

SU_API_BEGIN

/* A new empty model. Its address is what the host's Ruby model reports from skpdoc. */
SU_EXPORT SUModelRef su_standin_model_create(void);
/* Frees the model and everything in it; its references become invalid. */
SU_EXPORT void su_standin_model_release(SUModelRef model);
SU_EXPORT size_t su_standin_live_models(void);

/* A component definition appended to the model's component definitions. */
SU_EXPORT SUComponentDefinitionRef su_standin_add_component_definition(SUModelRef model,
                                                                       const char* name);
/* A group appended to entities, with a group definition of its own appended to the model's
   group definitions. Invalid entities give an invalid group. */
SU_EXPORT SUGroupRef su_standin_add_group(SUEntitiesRef entities);
/* An instance of definition appended to entities; both must belong to the same model. */
SU_EXPORT SUComponentInstanceRef su_standin_add_instance(SUEntitiesRef entities,
                                                         SUComponentDefinitionRef definition);
/* Sets the transformation of a group or component instance; 0 when entity is neither. */
SU_EXPORT int su_standin_set_transform(SUEntityRef entity,
                                       const struct SUTransformation* transform);

/* A new, empty attribute dictionary appended to the entity's list. Names need not be unique. */
SU_EXPORT SUAttributeDictionaryRef su_standin_add_dictionary(SUEntityRef entity, const char* name);
/* Stores a copy of value under key, replacing what was there. */
SU_EXPORT SUResult su_standin_dictionary_set(SUAttributeDictionaryRef dictionary, const char* key,
                                             SUTypedValueRef value);

/* Makes the named SDK function answer code without doing anything: on every call when nth is
   0, otherwise on its nth call from now only. Functions that return a reference answer an
   invalid one instead. Returns 0 when no SDK function has that name. */
SU_EXPORT int su_standin_fail(const char* function, SUResult code, size_t nth);
/* Makes the named count or length function (SUModelGetNum..., SUEntitiesGetNum...,
   SUEntityGetNumAttributeDictionaries, SUStringGetUTF8Length) report size instead of the
   true one, as a model larger than memory would: on every successful call when nth is 0,
   otherwise on its nth call from now only. Returns 0 when no SDK function has that name. */
SU_EXPORT int su_standin_report_size(const char* function, size_t size, size_t nth);
/* Clears every fault, every pending size and every call count. */
SU_EXPORT void su_standin_reset(void);
/* Calls of the named SDK function since the last reset (failed ones included). */
SU_EXPORT size_t su_standin_calls(const char* function);

/* Strings and typed values created and not yet released. */
SU_EXPORT size_t su_standin_live_strings(void);
SU_EXPORT size_t su_standin_live_typed_values(void);

SU_API_END

#endif
