proc fib n {expr {$n < 2 ? $n : [fib [expr {$n - 1}]] + [fib [expr {$n - 2}]]}}
puts [fib 16]
puts [string map {a b n mm} banana]
puts [regexp -all -inline {(\d)\1} 1223345566]
for {set i 0} {$i < 500} {incr i} {dict lappend groups [expr {$i % 7}] [expr {$i * $i}]}
puts [lmap key [lsort [dict keys $groups]] {tcl::mathop::+ {*}[dict get $groups $key]}]
coroutine numbers apply {{} {yield; foreach n {1 2 3} {yield $n}; return done}}
puts [numbers][numbers][numbers][numbers]
puts [expr {2 ** 200}] 
after 5 {lappend order first; after 5 {lappend order later; after idle {set finished 1}}}
vwait finished
puts $order
puts [clock format 86400 -gmt 1 -format %Y-%m-%d]
puts stderr [catch {error wrong} message]:$message
exit 8
