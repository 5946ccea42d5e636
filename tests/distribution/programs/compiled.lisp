; Machine code made, moved by collections, and thrown away, by several threads.
(defun fib (n) (if (< n 2) n (+ (fib (- n 1)) (fib (- n 2)))))

(defun compiled (k)
  (funcall (compile nil `(lambda (x) (+ x ,k (fib 12)))) k))

(defun work (from)
  (let ((sum 0) (kept '()))
    (dotimes (i 3)
      (incf sum (compiled (+ from i)))
      (push (make-array 20000 :initial-element i) kept)
      (when (= i 1) (gc)))
    (+ sum (length kept))))

(format t "~a ~a~%" (fib 15) (compiled 3))
(handler-case (/ 7 (parse-integer "0")) (error (e) (format t "~a~%" (type-of e))))
#+sb-thread
(let ((threads (loop for i below 2
                     collect (let ((i i)) (sb-thread:make-thread (lambda () (work (* 100 i))))))))
  (format t "~a~%" (mapcar #'sb-thread:join-thread threads)))
(gc :full t)
(format t "~a~%" (length (write-to-string (loop for i below 500 collect (expt i 9)))))
(finish-output)
(sb-ext:exit :code 9 :abort t)
