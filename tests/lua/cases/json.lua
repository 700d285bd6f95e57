-- SPDX-License-Identifier: Apache-2.0
-- The JSON of the Lua layer: what is read as what, and where a message says the mistake is.
local check = require "check"
local json = require "korvo.action_engine.json"

local tests = {}

local function read(text)
    local value, message = json.read(text)
    check.equal(message, nil, text)
    return value
end

local function refused(text, message)
    local value, found = json.read(text)
    check.equal(value, nil, text)
    check.equal(found, message, text)
end

function tests.values_are_read()
    check.equal(read ' {"a" : [ 1 , true,false ] ,\r\n\t"b":{}, "":"" } ', {a = {1, true, false}, b = {}, [""] = ""})
    check.is_true(read "null" == json.null)
    check.is_true(read('[null]')[1] == json.null)
    check.equal(read '{"a": 1, "a": 2}', {a = 2})
    check.is_true(json.is_object(read "{}"))
    check.is_true(not json.is_object(read "[]"))
    check.equal(read(string.rep("[", 32) .. string.rep("]", 32)) ~= nil, true)
end

function tests.numbers_are_read()
    for text, number in pairs {
        ["0"] = 0, ["-0"] = 0, ["-7"] = -7, ["4294967295"] = 4294967295, ["4294967295.0"] = 4294967295, ["1.5"] = 1.5,
        ["25e-1"] = 2.5, ["-1.25E+2"] = -125, ["6e3"] = 6000, ["0.001"] = 0.001, ["1e999"] = math.huge,
        ["0e999"] = 0, ["0.0e-999"] = 0, ["-1e999"] = -math.huge, ["1e-999"] = 0, ["1e" .. string.rep("9", 400)] = math.huge,
        ["1e-" .. string.rep("9", 400)] = 0, ["1" .. string.rep("0", 400) .. "e-399"] = 10, ["0.1e1"] = 1,
        ["0." .. string.rep("0", 399) .. "1e400"] = 1, ["123456789012345e-5"] = 1234567890.12345,
    } do
        check.equal(read(text), number, text)
    end
end

function tests.escapes_are_read()
    check.equal(read [["\" \\ \/ \b\f\n\r\t"]], "\" \\ / \b\f\n\r\t")
    check.equal(read [["\u0041\u00e9\u20AC\ud83D\uDe00\u0000"]], "A\195\169\226\130\172\240\159\152\128\0")
    check.equal(read [["\u007f\u0080\u07ff\u0800\uffff\ud800\udc00\udbff\udfff"]],
        "\127\194\128\223\191\224\160\128\239\191\191\240\144\128\128\244\143\191\191")
    check.equal(read [["\ud7ff\ue000"]], "\237\159\191\238\128\128")
    check.equal(read '"\195\169\240\159\152\128\127"', "\195\169\240\159\152\128\127")
end

function tests.mistakes_have_a_place()
    refused("", "line 1, column 1: a value is missing")
    refused("[1,\n 2,\n  x]", "line 3, column 3: a value is missing")
    refused("[x\n]", "line 1, column 2: a value is missing")
    refused("[1\nx]", "line 2, column 1: ']' or ',' is missing")
    refused('["\195\169\226\130\172" x]', "line 1, column 7: ']' or ',' is missing")
    refused("[1, 2", "line 1, column 6: ']' or ',' is missing")
    refused("[1,]", "line 1, column 4: a value is missing")
    refused('{"a":1,}', "line 1, column 8: the name of a member is missing")
    refused("{1:2}", "line 1, column 2: the name of a member is missing")
    refused('{"a" 1}', "line 1, column 6: ':' is missing")
    refused('{"a":1]', "line 1, column 7: '}' or ',' is missing")
    refused("nul", "line 1, column 1: a value is missing")
    refused("nulls", "line 1, column 1: a value is missing")
    refused("[1] 2", "line 1, column 5: something stands behind the end")
    refused("[01]", "line 1, column 2: this is no number")
    refused("[-]", "line 1, column 2: this is no number")
    refused("[1.]", "line 1, column 3: ']' or ',' is missing")
    refused("[1e]", "line 1, column 3: ']' or ',' is missing")
    refused("[+1]", "line 1, column 2: a value is missing")
    refused('["a', "line 1, column 2: the text has no end")
    refused('["a\\"]', "line 1, column 2: the text has no end")
    refused('"a\nb"', "line 1, column 3: a control character must be written as an escape")
    refused('"a\0b"', "line 1, column 3: a control character must be written as an escape")
    refused('"\\x41"', "line 1, column 2: there is no such escape")
    refused('"\\u12g4"', "line 1, column 2: there is no such escape")
    refused('"ab\\ud800"', "line 1, column 4: this is half a character")
    refused('"\\ud800\\u0041"', "line 1, column 2: this is half a character")
    refused('"\\udc00\\ud800"', "line 1, column 2: this is half a character")
    refused('"\\udc00\\udc00"', "line 1, column 2: this is half a character")
    refused("\239\187\191[]", "line 1, column 1: a value is missing")
    refused(string.rep("[", 33) .. string.rep("]", 33), "line 1, column 33: more than 32 levels")
    refused(string.rep("[", 1e6), "line 1, column 33: more than 32 levels")
end

function tests.text_must_be_utf8()
    for _, bytes in ipairs {
        "\128", "\191", "\192\128", "\193\191", "\195", "\195(", "\224\159\191", "\226\130", "\237\160\128", "\240\143\191\191",
        "\244\144\128\128", "\245\128\128\128", "\255",
    } do
        refused('["a' .. bytes .. '"]', "line 1, column 4: this is no UTF-8")
    end
end

function tests.what_is_written_is_read()
    local all = {}
    for code = 0, 127 do
        all[#all + 1] = string.char(code)
    end
    local text = table.concat(all)
    check.equal(read(json.compact(text)), text)
    check.equal(json.compact("\0\31 \127\"\\/\n\195\169"), [["\u0000\u001f ]] .. "\127" .. [[\"\\/\n]] .. "\195\169\"")
    check.equal(json.compact(json.members{{"b", {1, 2}}, {"a", json.members{}}, {"c", json.null}, {"d", true}}),
        '{"b":[1,2],"a":{},"c":null,"d":true}')
end

function tests.what_is_long_stands_in_lines()
    local members = json.members
    -- The whole stands in lines always, what is in it where it does not fit.
    check.equal(json.pretty(members{{"a", 1}, {"b", members{{"c", true}}}, {"d", {}}, {"e", members{}}, {"f", json.null}}),
        '{\n  "a": 1,\n  "b": {"c":true},\n  "d": [],\n  "e": {},\n  "f": null\n}')
    check.equal(json.pretty{1, 2}, "[1,2]")
    check.equal(json.pretty("a\n"), [["a\n"]])
    check.equal(json.pretty(members{}), "{}")
    check.equal(json.pretty(json.null), "null")
    -- 100 characters are a line, its margin counted.
    local fits, long = string.rep("x", 96), string.rep("x", 97)
    check.equal(json.pretty{fits}, '["' .. fits .. '"]')
    check.equal(json.pretty{long}, '[\n  "' .. long .. '"\n]')
    fits, long = string.rep("x", 94), string.rep("x", 95)
    check.equal(json.pretty(members{{"a", {fits}}, {"b", {long, members{{"c", {long}}, {"d", 2}}}}, {"e", "z"}}),
        '{\n  "a": ["' .. fits .. '"],\n  "b": [\n    "' .. long .. '",\n    {\n      "c": [\n        "' .. long ..
        '"\n      ],\n      "d": 2\n    }\n  ],\n  "e": "z"\n}')
end

return tests
