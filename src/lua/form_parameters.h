// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_FORM_PARAMETERS_H
#define KORVO_LUA_FORM_PARAMETERS_H

// The call forms of an operation, for those who make something of each: the module's table of functions and the stub for
// editors.
//
//     KORVO_CALL_FORMS(FORM, op, INPUTS, RESULTS)      writes FORM(form, op, INPUTS, RESULTS) for each form, in the order
//                                                      of registration; korvo_api_action_engine_<op>_<form> is the
//                                                      function
//     KORVO_VERSION_FORMS(FORM, op, INPUTS, RESULTS)   the same for the version handshake
//
//     KORVO_FORM_<form>(OWN, IN, OUT, CALLBACK, INPUTS, RESULTS)   writes the parameters of a form in C order, without
//                                                                  separators:
//       OWN(passing, name)      one that each operation has in this form; passing.def tells how it passes
//       IN(kind, member)        the inputs of the operation's row
//       OUT(kind, member)       its results
//       CALLBACK(RESULTS)       the callback, whose type depends on the results

#define KORVO_CALL_FORMS(FORM, op, INPUTS, RESULTS) \
    FORM(send, op, INPUTS, RESULTS)                 \
    FORM(send_with_timeout, op, INPUTS, RESULTS)    \
    FORM(non_blocking_send, op, INPUTS, RESULTS)    \
    FORM(receive, op, INPUTS, RESULTS)              \
    FORM(receive_with_timeout, op, INPUTS, RESULTS) \
    FORM(send_async, op, INPUTS, RESULTS)           \
    FORM(cancel_async, op, INPUTS, RESULTS)

// The inputs of the handshake are the library's.
#define KORVO_NO_INPUTS(IN)
#define KORVO_VERSION_FORMS(FORM, op, INPUTS, RESULTS)    \
    FORM(send, op, KORVO_NO_INPUTS, RESULTS)              \
    FORM(non_blocking_send, op, KORVO_NO_INPUTS, RESULTS) \
    FORM(receive, op, KORVO_NO_INPUTS, RESULTS)           \
    FORM(send_async, op, KORVO_NO_INPUTS, RESULTS)        \
    FORM(cancel_async, op, KORVO_NO_INPUTS, RESULTS)

#define KORVO_FORM_send(OWN, IN, OUT, CALLBACK, INPUTS, RESULTS) \
    OWN(opaque, handle) OWN(text, target) INPUTS(IN) RESULTS(OUT)
#define KORVO_FORM_send_with_timeout(OWN, IN, OUT, CALLBACK, INPUTS, RESULTS) \
    OWN(opaque, handle) OWN(text, target) OWN(integer, timeout) INPUTS(IN) RESULTS(OUT)
#define KORVO_FORM_non_blocking_send(OWN, IN, OUT, CALLBACK, INPUTS, RESULTS) \
    OWN(opaque, handle) OWN(text, target) OWN(out_request_id, request_id) INPUTS(IN)
#define KORVO_FORM_receive(OWN, IN, OUT, CALLBACK, INPUTS, RESULTS) \
    OWN(opaque, handle) OWN(flag, block) OWN(text, target) OWN(request_id, request_id) RESULTS(OUT)
#define KORVO_FORM_receive_with_timeout(OWN, IN, OUT, CALLBACK, INPUTS, RESULTS) \
    OWN(opaque, handle) OWN(text, target) OWN(integer, timeout) OWN(request_id, request_id) RESULTS(OUT)
#define KORVO_FORM_send_async(OWN, IN, OUT, CALLBACK, INPUTS, RESULTS) \
    OWN(opaque, handle) OWN(text, target) INPUTS(IN) CALLBACK(RESULTS) OWN(opaque, context)
#define KORVO_FORM_cancel_async(OWN, IN, OUT, CALLBACK, INPUTS, RESULTS) \
    OWN(opaque, handle) CALLBACK(RESULTS) OWN(opaque, context)

#endif
