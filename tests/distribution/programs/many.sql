create table t(id integer primary key, a int, b real, c text);
with recursive n(x) as (select 1 union all select x + 1 from n where x < 5000)
insert into t select x, x * 7919 % 1009, x / 3.0, printf('%05x', x * x) from n;
create index by_a on t(a);
select a, count(*), sum(b), max(c) from t group by a having a % 100 = 3 order by 2, 1;
begin;
delete from t where id % 2;
rollback;
select count(*), avg(b), group_concat(distinct substr(c, 1, 1)) from t;
create virtual table words using fts5(line);
insert into words select 'word' || (id % 50) || ' other' || (id % 7) from t;
select count(*) from words where words match 'word7 AND other3';
select json_group_array(json_object('id', id, 'c', c)) from (select * from t where a = 77);
select id, sum(b) over (order by id rows 3 preceding) from t limit 5;
pragma integrity_check;
select * from nowhere;
