-- Hot loops, side exits, machine code that is thrown away and made again, and calls back from C.
local ffi = require("ffi")
ffi.cdef [[void qsort(void *, size_t, size_t, int (*)(const int *, const int *));]]
print(jit.status() and "compiler on", jit.arch)
local sum = 0
for i = 1, 2000000 do sum = (sum + i * i) % 1000003 end
print(sum)
local function mixed(value) return type(value) == "number" and value * 2 or #value end
local total = 0
for i = 1, 20000 do total = total + mixed(i % 5 == 0 and tostring(i) or i) end
print(total)
for round = 1, 3 do
  local code = loadstring("local n = 0 for i = 1, 1000 do n = n + i * " .. round .. " end return n")
  print(code())
  jit.flush()
end
local numbers = ffi.new("int[500]")
for i = 0, 499 do numbers[i] = (i * 7919) % 500 end
ffi.C.qsort(numbers, 500, 4, function(a, b) return a[0] - b[0] end)
for i = 0, 499 do assert(numbers[i] == i) end
print(pcall(function() local t = setmetatable({}, { __index = function(_, k) error("no " .. k) end }) return t.x end))
