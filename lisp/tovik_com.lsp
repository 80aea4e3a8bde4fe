;;; The lisp side of the Tovik library's mailbox.
;;;
;;; The library writes a request word into USERS1 (and its argument into
;;; USERS2), types "(TOVIK_COM) " at the command line and reads the answer
;;; from USERS2, USERS3, USERI1 or USERR1..USERR3. Add-ins load this file
;;; into the host program (APPLOAD, or from acaddoc.lsp); the headless host
;;; loads it into every drawing it opens. It uses only functions that the
;;; host program's lisp and the headless host's lisp both have.

(defun tovik-com-group-set (name / groups group set)
  ;; The members of the group NAME as a selection set; nil when it is
  ;; missing or empty.
  (setq set (ssadd))
  (if (and (setq groups (dictsearch (namedobjdict) "ACAD_GROUP"))
           (setq group (dictsearch (cdr (assoc -1 groups)) name)))
    (foreach pair group
      (if (= (car pair) 340) (ssadd (cdr pair) set))))
  (if (> (sslength set) 0) set))

(defun tovik-com-handle (ent)
  ;; The handle of ENT, or "" for nil.
  (if ent (cdr (assoc 5 (entget ent))) ""))

(defun tovik-com-join (items sep / out)
  (setq out "")
  (foreach item items
    (setq out (if (= out "") item (strcat out sep item))))
  out)

(defun tovik-com-text-box (ent / data box ins ang)
  ;; The corners of a text's box in world coordinates, "x,y x,y x,y x,y"
  ;; from the lower left, counter-clockwise in the text's own frame.
  (setq data (entget ent)
        box (textbox data)
        ins (cdr (assoc 10 data))
        ang (cdr (assoc 50 data)))
  (tovik-com-join
    (mapcar
      '(lambda (p / q)
         (setq q (polar ins (+ ang (angle '(0 0) p)) (distance '(0 0) p)))
         (strcat (rtos (car q) 2 8) "," (rtos (cadr q) 2 8)))
      (list (car box)
            (list (car (cadr box)) (cadr (car box)))
            (cadr box)
            (list (car (car box)) (cadr (cadr box)))))
    " "))

(defun TOVIK_COM (/ request ent point color set)
  (setq request (getvar "USERS1"))
  (cond
    ((= request "RunLisp") (load (getvar "USERS2")))
    ((= request "ClearSSSetFirst") (sssetfirst nil nil))
    ((= request "Color")
     (if (setq color (acad_colordlg (getvar "USERI1")))
       (setvar "USERI1" color)))
    ((= request "EntNext")
     (setvar "USERS2"
       (if (setq ent (handent (getvar "USERS2")))
         (tovik-com-handle (entnext ent))
         "")))
    ((= request "EntLast") (setvar "USERS2" (tovik-com-handle (entlast))))
    ((= request "CursorPoint")
     (setq point (cadr (grread T)))
     (setvar "USERR1" (float (car point)))
     (setvar "USERR2" (float (cadr point)))
     (setvar "USERR3" (float (if (caddr point) (caddr point) 0.0))))
    ((= request "ToPickSet") (sssetfirst nil (tovik-com-group-set "TOVIK_COM")))
    ((= request "ToPrevious")
     (if (setq set (tovik-com-group-set "TOVIK_COM"))
       (command "_.SELECT" set "")))
    ((= request "TextBox")
     (setvar "USERS3"
       (if (setq ent (handent (getvar "USERS2"))) (tovik-com-text-box ent) "")))
    ((= request "DimBlock")
     (setvar "USERS2"
       (if (and (setq ent (handent (getvar "USERS2"))) (assoc 2 (entget ent)))
         (cdr (assoc 2 (entget ent)))
         ""))))
  (princ))

(princ)
