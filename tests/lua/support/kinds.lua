-- SPDX-License-Identifier: Apache-2.0
-- What the kinds of inputs and results are in Lua and on the side of the core.
local pointer_types = require "pointer_types"

require "korvo_api_action_engine"

local kinds = {}

local function handle()
    return host.typed("_p_void", host.pointer(200))
end

--- One value of each type, none of them twice, and its type as messages have it.
function kinds.values()
    return {
        {"nil", nil, "nil"},
        {"boolean", true, "boolean"},
        {"number", 7, "number"},
        {"numeral", "7", "string"},
        {"string", "text", "string"},
        {"table", {}, "table"},
        {"function", function() end, "function"},
        {"thread", coroutine.create(function() end), "thread"},
        {"light userdata", host.pointer(7), "userdata (unknown type)"},
        {"userdata", (host.userdata(16)), "userdata (unknown type)"},
        {"typed pointer", handle(), "void *"},
    }
end

-- Inputs. `accepts`: the values above whose type is right. `samples`: what a script gives, and what the core gets.
-- `expected`: what messages call the type. `type`: the pointer type.
local userdata = {["nil"] = true, ["light userdata"] = true, userdata = true, ["typed pointer"] = true}
local number = {number = true, numeral = true}

local function list(expected, ...)
    return {expected = expected, accepts = {table = true}, samples = {...}}
end

local function place(expected, pointer_type)
    return {
        expected = expected,
        type = pointer_type,
        accepts = userdata,
        samples = {{host.typed(pointer_type, host.pointer(150)), host.pointer(150)}, {nil, nil}},
    }
end

kinds.inputs = {
    opaque = {
        expected = "void *",
        accepts = userdata,
        samples = {
            {host.typed("_p_void", host.pointer(1)), host.pointer(1)},
            {host.typed("_p_unsigned_int", host.pointer(2)), host.pointer(2)},
            {host.pointer(3), host.pointer(3)},
            {nil, nil},
            {host.userdata(5)},
            -- As large as a typed pointer, and of the host's own type.
            {host.userdata(24, {})},
            {host.userdata(12, {})},
        },
    },
    text = {
        expected = "char const *",
        accepts = {["nil"] = true, number = true, numeral = true, string = true},
        samples = {{"text", "text"}, {"", ""}, {nil, nil}, {12.5, "12.5"}, {"before\0behind", "before"}},
    },
    number = {
        expected = "unsigned int",
        accepts = number,
        samples = {
            {0, 0}, {1, 1}, {"17", 17}, {1.9, 1}, {0.4, 0}, {-0.0, 0}, {2147483648, 2147483648},
            {4294967295, 4294967295}, {4294967296, 4294967295}, {2 ^ 40, 4294967295}, {math.huge, 4294967295},
            {"0x10", 16},
        },
    },
    int = {
        expected = "int",
        accepts = number,
        samples = {
            {0, 0}, {-1, -1}, {"17", 17}, {1.9, 1}, {-2.7, -2}, {2147483647, 2147483647}, {-2147483648, -2147483648},
            {2147483648, 2147483647}, {2 ^ 40, 2147483647}, {-2 ^ 40, -2147483648}, {math.huge, 2147483647},
            {-math.huge, -2147483648}, {0 / 0, 0},
        },
    },
    flag = {expected = "unsigned char", accepts = {boolean = true}, samples = {{true, 1}, {false, 0}}},
    double = {
        expected = "double const",
        accepts = number,
        samples = {{0, 0}, {-2.5, -2.5}, {"1e3", 1000}, {2 ^ 40, 2 ^ 40}, {math.huge, math.huge}, {0 / 0, 0 / 0}},
    },
    status = {expected = "korvo_core_status", accepts = number, samples = {{4, 4}, {0, 0}, {"10", 10}, {99, 99}}},
    priority = {expected = "korvo_core_log_priority", accepts = number, samples = {{4, 4}, {0, 0}, {"9", 9}, {99, 99}}},
    texts = list("char **", {{}, {}}, {{"a", "bb"}, {"a", "bb"}}, {{"x\0y"}, {"x"}}, {{"a", 5}, nil}),
    numbers = list("unsigned int **", {{}, {}}, {{1, 2}, {1, 2}}, {{-1}, {4294967295}}, {{"1"}, nil}),
    integers = list("int **", {{}, {}}, {{1.9, -2.7}, {1, -2}}, {{2, x = 1}, nil}),
    flags = list("unsigned char **", {{}, {}}, {{true, false}, {1, 0}}, {{1, 0}, nil}),
    reals = list("double **", {{}, {}}, {{0.5, -2.5}, {0.5, -2.5}}, {{1, nil, 3}, nil}),
    handle_place = place("void **", "_p_p_void"),
    number_place = place("unsigned int *", "_p_unsigned_int"),
    flag_place = place("unsigned char *", "_p_unsigned_char"),
    text_list = place("char **", "_p_p_char"),
    response_callback = place("void (*)(char **,char **,char **,char **,void *)",
                              "_p_f_p_p_char_p_p_char_p_p_char_p_p_char_p_void__void"),
    message_callback = place("void (*)(char **,char **,char **,void *)",
                             "_p_f_p_p_char_p_p_char_p_p_char_p_void__void"),
    event_handler = place("korvo_api_action_engine_action_completed_event_callback_func_ptr",
                          "_p_f_unsigned_int_p_q_const__char_unsigned_char_p_q_const__char_p_void__void"),
}

--- An input kind of a function's row.
function kinds.input(row, position)
    local kind = row.inputs[position]
    if kind == "callback" then
        return place("korvo_api_action_engine_" .. row.operation .. "_method_callback_func_ptr",
                     pointer_types.of_callback[row.operation])
    end
    return assert(kinds.inputs[kind], kind)
end

--- Arguments that pass all checks.
function kinds.good_arguments(row)
    local arguments = {n = #row.inputs}
    for position = 1, #row.inputs do
        arguments[position] = kinds.input(row, position).samples[1][1]
    end
    return arguments
end

-- Results: what the core answers, and what a script gets; `empty`: what it gets when the core writes nothing.
kinds.results = {
    status = {samples = {{0, 0}, {9, 9}, {4000000000, 4000000000}}, empty = 0},
    number = {samples = {{0, 0}, {7, 7}, {4294967295, 4294967295}}, empty = 0},
    integer = {samples = {{0, 0}, {-7, -7}, {2147483647, 2147483647}}, empty = 0},
    real = {samples = {{0, 0}, {-0.5, -0.5}, {math.huge, math.huge}}, empty = 0},
    flag = {samples = {{1, true}, {0, false}, {255, true}}, empty = false},
    text = {samples = {{"text", "text"}, {"", ""}, {nil, nil}}, empty = nil},
    constant_text = {samples = {{"text", "text"}, {"", ""}, {nil, nil}}, empty = nil},
    texts = {samples = {{{"a", "bb"}, {"a", "bb"}}, {{}, {}}, {nil, nil}}, empty = nil},
    integers = {samples = {{{-1, 2}, {-1, 2}}, {{}, {}}, {nil, nil}}, empty = nil},
    flags = {samples = {{{1, 0, 255}, {true, false, true}}, {{}, {}}, {nil, nil}}, empty = nil},
    reals = {samples = {{{0.5, -2}, {0.5, -2}}, {{}, {}}, {nil, nil}}, empty = nil},
}

return kinds
